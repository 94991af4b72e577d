#include "text/FileReader.h"

#include <ostream>

FileReader::FileReader(const char* filename) {
    setFilename(filename);
}

FileReader::~FileReader() {
    close();
}

bool FileReader::open() {
    if (m_stream)
        return m_stream->is_open() || m_stream->good();
    m_file.open(m_filename, std::ios::in | std::ios::binary);
    if (!m_file.is_open())
        return false;
    m_stream = &m_file;
    return true;
}

void FileReader::close() {
    if (m_stream == &m_file) {
        m_file.close();
        m_stream = nullptr;
    }
}

FileWritingAgent::FileWritingAgent(const char* filename) {
    setFilename(filename);
}

FileWritingAgent::~FileWritingAgent() = default;

bool FileWritingAgent::render() {
    std::ofstream out(m_filename, std::ios::out | std::ios::trunc | std::ios::binary);
    if (!out.is_open())
        return false;
    writeContents(out);
    out.flush();
    return out.good();
}

void FileWritingAgent::writeContents(std::ostream&) {}
