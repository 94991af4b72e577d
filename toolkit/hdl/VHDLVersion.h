/// VHDLVersion: the edition of the VHDL language that new VHDL text is read and written in.
#pragma once

/// The values keep their numbers.
enum VHDLVersion : int {
    VHDL87 = 0,
    VHDL93 = 1,
    VHDL2002 = 2,
    VHDL2008 = 3,
};
