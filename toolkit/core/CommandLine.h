/// \file
/// initArgs: splits a command line into an argument vector.
#pragma once

#include "core/TqExport.h"

/// Splits commandLine into words. Outside a word blanks, tabs, CR and LF separate; ' and "
/// open stretches that may hold separators (the quotes are dropped, and only the opening
/// kind closes them); a backslash before ' or " yields that quote literally, before anything
/// else it is kept. argc is set to 1 + the number of words.
/// Heap: returns an array of argc pointers whose slot 0 is null (the caller's program name);
/// the caller frees each word and the array with delete[].
TQ_EXPORT char** initArgs(char* commandLine, int& argc);
