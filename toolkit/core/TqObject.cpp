#include "core/TqObject.h"

#include <cstdint>
#include <cstring>
#include <ostream>
#include <sstream>

Criteria::~Criteria() = default;

char* TqObject::p_staticBuffers[TqObject::v_ringSize] = {};
int TqObject::v_staticBufferLengths[TqObject::v_ringSize] = {};
int TqObject::v_currentBuffer = 0;

TqObject::~TqObject() = default;

bool TqObject::maybeDelete() {
    delete this;
    return true;
}

std::ostream& TqObject::printOn(std::ostream& out) const {
    return out << " Object";
}

std::ostream& TqObject::storeOn(std::ostream& out, Criteria&) const {
    return printOn(out);
}

namespace {
std::uintptr_t addressOf(const TqObject& object) {
    return reinterpret_cast<std::uintptr_t>(&object);
}
} // namespace

bool TqObject::operator>(const TqObject& other) const {
    return addressOf(*this) > addressOf(other);
}

bool TqObject::operator<(const TqObject& other) const {
    return addressOf(*this) < addressOf(other);
}

bool TqObject::operator==(const TqObject& other) const {
    return addressOf(*this) == addressOf(other);
}

const char* TqObject::asString() const {
    std::ostringstream out;
    printOn(out);
    return copyToNextStaticBuffer(out.str());
}

int TqObject::startUp() {
    for (int i = 0; i < v_ringSize; ++i) {
        delete[] p_staticBuffers[i];
        p_staticBuffers[i] = new char[v_initialBufferLength]();
        v_staticBufferLengths[i] = v_initialBufferLength;
    }
    return 1;
}

void TqObject::shutDown() {
    for (char*& buffer : p_staticBuffers) {
        delete[] buffer;
        buffer = nullptr;
    }
}

char* TqObject::nextStaticBuffer() {
    v_currentBuffer = (v_currentBuffer + 1) % v_ringSize;
    return p_staticBuffers[v_currentBuffer];
}

char* TqObject::staticBuffer() {
    return p_staticBuffers[v_currentBuffer];
}

int TqObject::staticBufferLength() {
    return v_staticBufferLengths[v_currentBuffer];
}

char* TqObject::fitStaticBuffer(int size) {
    const int old = v_staticBufferLengths[v_currentBuffer];
    if (old < size) {
        char* grown = new char[size];
        std::memcpy(grown, p_staticBuffers[v_currentBuffer], old);
        delete[] p_staticBuffers[v_currentBuffer];
        p_staticBuffers[v_currentBuffer] = grown;
        v_staticBufferLengths[v_currentBuffer] = size;
    }
    return p_staticBuffers[v_currentBuffer];
}

char* TqObject::copyToNextStaticBuffer(std::string_view text) {
    nextStaticBuffer();
    char* buffer = fitStaticBuffer(static_cast<int>(text.size()) + 1);
    std::memcpy(buffer, text.data(), text.size());
    buffer[text.size()] = '\0';
    return buffer;
}
