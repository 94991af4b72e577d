/// \file
/// Reading coordinates from a file element, shared by the points and the rectangles.
#pragma once

class FileElement;

/// True, with out[0..count) set, when the element's first count items are all number tokens;
/// each is read as a decimal integer, saturated to the signed 32-bit range that files were
/// written with. False, with out untouched, otherwise.
bool readCoordinates(FileElement& element, long* out, short count);
