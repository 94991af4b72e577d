#include "graphics/export/QtFileDevice.h"

#include "core/TqVersion.h"

#include <QPageSize>
#include <QPdfWriter>

QtFileDevice::~QtFileDevice() {
    if (m_painter.isActive())
        (void)close();
}

void QtFileDevice::begin(std::unique_ptr<QPaintDevice> target) {
    m_target = std::move(target);
    if (m_painter.begin(m_target.get()))
        setPainter(&m_painter);
}

bool QtFileDevice::close() {
    if (!m_painter.isActive())
        return false;
    setPainter(nullptr);
    return m_painter.end();
}

QPaintDevice& QtFileDevice::paintDevice() {
    return *m_target;
}

PDFDevice::PDFDevice(const char* fileName, const char* jobName, int width, int height,
                     int resolution) {
    auto writer = std::make_unique<QPdfWriter>(QString::fromUtf8(fileName));
    writer->setTitle(QString::fromUtf8(jobName));
    writer->setCreator(QStringLiteral("tarqtool " TQ_VERSION_STRING));
    writer->setResolution(resolution);
    const double pointsPerUnit = 72.0 / resolution;
    writer->setPageSize(QPageSize(QSizeF(width * pointsPerUnit, height * pointsPerUnit),
                                  QPageSize::Point, QString(), QPageSize::ExactMatch));
    writer->setPageMargins(QMarginsF(0, 0, 0, 0));
    begin(std::move(writer));
}
