#include "text/ScanType.h"

namespace {

const char* const typeTexts[ST_COUNT] = {
    "+",  "-",    "*",  "/",      "(",   ")",  "[",  "]",       "letter", "number", "space",
    ":",  "word", ",",  "none",   "end", "<",  ">",  "\n",      "'",      "\"",     "@",
    ".",  "#",    "\\", "string", ";",   "^",  "@/", "@-",      "\r",     "'h",     "'d",
    "'b", "'o",   "{",  "}",      "~",   "&",  "|",  "keyword", "$",      "=",      "..",
    "/",  "!",    ">",  "<",      ">=",  "<=", "==", "!=",      "?",      "===",    "!==",
};

} // namespace

const char* scanTypeText(ScanType type) {
    int value = static_cast<int>(type);
    return value >= 0 && value < ST_COUNT ? typeTexts[value] : "?";
}
