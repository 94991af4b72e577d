// What the X tests share with their main: the screen's size and why the tests skip.
#pragma once

#include <string>

// At most 1000 pixels across and down, so that thousandths of the display are exact pixels.
constexpr int x11ScreenWidth = 1000;
constexpr int x11ScreenHeight = 800;

// Empty when the X server runs; otherwise the reason every test skips.
extern std::string x11SkipReason;
