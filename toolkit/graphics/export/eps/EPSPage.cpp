#include "graphics/export/eps/EPSPage.h"

#include "graphics/export/eps/EPSWriter_p.h"

EPSPage::EPSPage(const char* jobName, std::ostream& out, const ExportParameters& parameters)
    : m_writer(std::make_unique<EPSWriter>(jobName, out, parameters)) {}

EPSPage::~EPSPage() = default;

bool EPSPage::open(const DeviceRectangle& source, const DeviceRectangle& target) {
    m_writer->open(source, target, deviceSize());
    scaleChanged();
    pageOpened();
    return true;
}

void EPSPage::close() {
    m_writer->close();
}

void EPSPage::endOfPage() {
    m_writer->endOfPage();
}

void EPSPage::endPath() {
    m_writer->endPath();
}

void EPSPage::closePath() {
    m_writer->closePath();
}

void EPSPage::computeFontScaleFactor(const DeviceRectangle& source, const DeviceRectangle& target) {
    m_writer->computeFontScaleFactor(source, target);
    scaleChanged();
}

double EPSPage::fontScaleFactor() const {
    return m_writer->fontScaleFactor();
}

DevicePoint EPSPage::paperSize() const {
    return EPSWriter::paperSize(parameters());
}

DevicePoint EPSPage::deviceSize() const {
    return EPSWriter::deviceSize(parameters());
}

const char* EPSPage::jobName() const {
    return m_writer->jobName();
}

const ExportParameters& EPSPage::parameters() const {
    return m_writer->parameters();
}

const char* EPSPage::error() const {
    return m_writer->error();
}
