#include "graphics/geometry/TqMatrix.h"

#include "graphics/geometry/SheetRectangle.h"
#include "graphics/geometry/Transformation.h"

#include <QRect>
#include <ostream>

TqMatrix::TqMatrix(const FloatPoint& scale, const FloatPoint& translation)
    : QTransform(scale.x(), 0.0, 0.0, scale.y(), translation.x(), translation.y()) {}

TqMatrix& TqMatrix::operator=(const QTransform& matrix) {
    QTransform::operator=(matrix);
    return *this;
}

TqMatrix& TqMatrix::scratch() {
    static TqMatrix instance;
    return instance;
}

void TqMatrix::setElements(double sx, double sy, double tx, double ty) {
    setMatrix(sx, m12(), m13(), m21(), sy, m23(), tx, ty, m33());
}

void TqMatrix::setScale(double x, double y) {
    setElements(x, y, dx(), dy());
}

void TqMatrix::setTranslation(double x, double y) {
    setElements(m11(), m22(), x, y);
}

void TqMatrix::setXScale(double s) {
    setElements(s, m22(), dx(), dy());
}

void TqMatrix::setYScale(double s) {
    setElements(m11(), s, dx(), dy());
}

void TqMatrix::setXTranslation(double t) {
    setElements(m11(), m22(), t, dy());
}

void TqMatrix::setYTranslation(double t) {
    setElements(m11(), m22(), dx(), t);
}

void TqMatrix::setXHalf(double scale, double translation) {
    setElements(scale, m22(), translation, dy());
}

void TqMatrix::setYHalf(double scale, double translation) {
    setElements(m11(), scale, dx(), translation);
}

long TqMatrix::applyXHalfTo(double v, bool round) const {
    qreal x = 0, y = 0;
    map(v, 0.0, &x, &y);
    return Transformation::clampToDevice(x, round);
}

long TqMatrix::applyYHalfTo(double v, bool round) const {
    qreal x = 0, y = 0;
    map(0.0, v, &x, &y);
    return Transformation::clampToDevice(y, round);
}

double TqMatrix::applyInverseXHalfTo(long d) const {
    return (static_cast<double>(d) - dx()) / m11();
}

double TqMatrix::applyInverseYHalfTo(long d) const {
    return (static_cast<double>(d) - dy()) / m22();
}

void TqMatrix::translateBy(const FloatPoint& d) {
    setElements(m11(), m22(), dx() + d.x(), dy() + d.y());
}

void TqMatrix::scaleBy(const FloatPoint& f) {
    setElements(m11() * f.x(), m22() * f.y(), dx(), dy());
}

void TqMatrix::scrollBy(const FloatPoint& d) {
    setElements(m11(), m22(), dx() + d.x() * m11(), dy() + d.y() * m22());
}

void TqMatrix::physicalToLogical(QRect& rect) const {
    // Qt's right and bottom are the last pixel inside; the mapped edges are those after it.
    SheetRectangle logical;
    logical.setLeft(applyInverseXHalfTo(rect.left()));
    logical.setTop(applyInverseYHalfTo(rect.top()));
    logical.setRight(applyInverseXHalfTo(long{rect.right()} + 1));
    logical.setBottom(applyInverseYHalfTo(long{rect.bottom()} + 1));
    rect = logical.toQRect();
}

std::ostream& TqMatrix::printOn(std::ostream& out) const {
    out << "(scale:";
    scale().printOn(out) << " xlate:";
    return translation().printOn(out) << ')';
}
