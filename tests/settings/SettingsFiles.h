// Settings files for the tests: written by hand into a temporary directory, and read back
// as a map of "Section/key" to the raw text after '=' (what a plain INI reader sees).
#pragma once

#include <QFile>
#include <QString>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <map>
#include <string>

inline void writeTextFile(const QString& path, const char* text) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(text);
}

inline std::string readTextFile(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::string();
    return file.readAll().toStdString();
}

// The plainest INI reading: "[section]" lines and "key=value" lines, nothing trimmed or
// unquoted, so that a test sees the bytes another program would see.
inline std::map<std::string, std::string> rawKeys(const QString& path) {
    std::map<std::string, std::string> keys;
    std::string section;
    const std::string text = readTextFile(path);
    std::size_t start = 0;
    while (start < text.size()) {
        std::size_t end = text.find('\n', start);
        if (end == std::string::npos)
            end = text.size();
        const std::string line = text.substr(start, end - start);
        start = end + 1;
        if (line.size() >= 2 && line.front() == '[' && line.back() == ']') {
            section = line.substr(1, line.size() - 2);
            continue;
        }
        const std::size_t equals = line.find('=');
        if (equals != std::string::npos)
            keys[section + "/" + line.substr(0, equals)] = line.substr(equals + 1);
    }
    return keys;
}
