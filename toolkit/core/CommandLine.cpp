#include "core/CommandLine.h"

#include "core/StringFunctions.h"

#include <string>
#include <vector>

namespace {
bool isSeparator(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}
} // namespace

char** initArgs(char* commandLine, int& argc) {
    std::vector<std::string> words;
    const char* p = commandLine ? commandLine : "";
    while (*p) {
        if (isSeparator(*p)) {
            ++p;
            continue;
        }
        std::string word;
        char quote = '\0';
        for (; *p && (quote || !isSeparator(*p)); ++p) {
            if (*p == '\\' && (p[1] == '\'' || p[1] == '"')) {
                word += *++p;
            } else if (quote && *p == quote) {
                quote = '\0';
            } else if (!quote && (*p == '\'' || *p == '"')) {
                quote = *p;
            } else {
                word += *p;
            }
        }
        words.push_back(std::move(word));
    }
    argc = static_cast<int>(words.size()) + 1;
    char** argv = new char*[static_cast<std::size_t>(argc)];
    argv[0] = nullptr;
    for (std::size_t i = 0; i < words.size(); ++i)
        argv[i + 1] = mem_strdup(words[i].c_str());
    return argv;
}
