#include "graphics/export/mif/MIFDocument.h"

#include "graphics/export/mif/MIFWriter_p.h"

MIFDocument::MIFDocument(const char* jobName, std::ostream& out, const ExportParameters& parameters,
                         const DeviceRectangle& drawing)
    : m_writer(std::make_unique<MIFWriter>(jobName, out, parameters, drawing)) {}

MIFDocument::~MIFDocument() = default;

const char* MIFDocument::jobName() const {
    return m_writer->jobName();
}

const ExportParameters& MIFDocument::parameters() const {
    return m_writer->parameters();
}

const char* MIFDocument::error() const {
    return m_writer->error();
}

void MIFDocument::startTable(const char* title, bool titleBelow) {
    m_writer->startTable(title, titleBelow);
}

void MIFDocument::endTable() {
    m_writer->endTable();
}

void MIFDocument::startHeader() {
    m_writer->startHeader();
}

void MIFDocument::endHeader() {
    m_writer->endHeader();
}

void MIFDocument::startBody() {
    m_writer->startBody();
}

void MIFDocument::endBody() {
    m_writer->endBody();
}

void MIFDocument::startRow() {
    m_writer->startRow();
}

void MIFDocument::endRow() {
    m_writer->endRow();
}

void MIFDocument::startCell(int columns) {
    m_writer->startCell(columns);
}

void MIFDocument::writeCellText(const char* text) {
    m_writer->writeCellText(text);
}

void MIFDocument::endCell() {
    m_writer->endCell();
}

const MIFArrowType& MIFDocument::getArrowType(const DevicePoint& size) {
    return m_writer->getArrowType(size);
}

void MIFDocument::emitDashedPattern(std::string& out, wsiPenStyle style) {
    MIFWriter::emitDashedPattern(out, style);
}

void MIFDocument::emitArrowCatalog(std::string& out) const {
    m_writer->emitArrowCatalog(out);
}

void MIFDocument::writeFontCatalog(std::string& out) const {
    m_writer->writeFontCatalog(out);
}

void MIFDocument::writeFontEntry(std::string& out, const MIFFont& font, int separation) {
    MIFWriter::writeFontEntry(out, font, separation);
}

bool MIFDocument::close() {
    return m_writer->close();
}
