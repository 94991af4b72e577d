/// SignalPattern: a wildcard pattern over hierarchical signal names ("top.cpu.*"), built on
/// the toolkit's Pattern. `*` matches within one level of the hierarchy (no '.'), `**` across
/// levels, `?` one character; every other character matches itself.
#pragma once

#include "text/Pattern.h"

class SignalPattern : public Pattern {
public:
    explicit SignalPattern(const char* text);
    /// True when the whole of name matches.
    bool matches(const char* name) const { return completeMatch(name); }
};
