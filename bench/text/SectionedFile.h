// A deterministic generator of large sectioned files for the text benchmarks, so that no
// data file is kept in the repository.
#pragma once

#include <cstddef>
#include <string>

// The path of a generated file of at least minBytes in the temporary directory, written on
// first use (a file left by an earlier run with the same size and seed is reused).
std::string sectionedFilePath(std::size_t minBytes);
