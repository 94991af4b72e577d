#pragma once

#include "core/TqExport.h"

#include <iosfwd>
#include <string_view>

/// What a storeOn writes may depend on. The toolkit's own classes store one fixed form and
/// ignore it; an application derives its own criteria (selection only, version, ...).
class TQ_EXPORT Criteria {
public:
    virtual ~Criteria();
};

/// TqObject: the root class of most toolkit classes. It gives every object a printed form,
/// a stored form and identity comparisons, and owns the ring of static buffers in which the
/// toolkit's formatting functions return their text.
class TQ_EXPORT TqObject {
public:
    /// The virtual interface, in its fixed slot order.
    virtual ~TqObject();
    /// Deletes this object through its virtual destructor; always returns true.
    virtual bool maybeDelete();
    /// Writes the printed form; the base writes " Object" (leading blank included).
    virtual std::ostream& printOn(std::ostream& out) const;
    /// Writes the stored form; the base ignores the criteria and prints.
    virtual std::ostream& storeOn(std::ostream& out, Criteria& criteria) const;
    ///@{
    /// The base order is that of memory addresses, and equality is identity.
    virtual bool operator>(const TqObject& other) const;
    virtual bool operator<(const TqObject& other) const;
    virtual bool operator==(const TqObject& other) const;
    ///@}

    /// The negation of the (virtual) operator==, so a class that redefines equality gets
    /// this one with it.
    bool operator!=(const TqObject& other) const { return !(*this == other); }

    /// The printed form, in the next ring buffer (grown to fit, never overrun).
    const char* asString() const;

    // --- The static buffer ring -------------------------------------------------------------
    /// Eight buffers of 4096 bytes; a ring result stays valid until eight more ring buffers
    /// have been taken. No lock: one thread at a time.

    /// Allocates the eight buffers at 4096 bytes each; always returns 1. Calling it again
    /// after shutDown starts a fresh ring.
    static int startUp();
    /// Frees the eight buffers. No ring operation may run after it until the next startUp;
    /// the pointers are cleared so that a stray use faults at once.
    static void shutDown();
    /// Advances the ring and returns the new current buffer.
    static char* nextStaticBuffer();
    /// The current buffer, without advancing.
    static char* staticBuffer();
    /// The capacity of the current buffer in bytes.
    static int staticBufferLength();
    /// Grows the current buffer to at least size bytes, keeping its contents, and returns it.
    /// Never shrinks and never advances.
    static char* fitStaticBuffer(int size);
    /// Advances the ring and copies text into the new buffer, grown to fit; returns it.
    static char* copyToNextStaticBuffer(std::string_view text);

private:
    static constexpr int v_ringSize = 8;
    static constexpr int v_initialBufferLength = 4096;
    static char* p_staticBuffers[v_ringSize];
    static int v_staticBufferLengths[v_ringSize];
    static int v_currentBuffer;
};
