/// Program: the tqdiagram command line, its verbs (render, convert, info, script) and their
/// help, over the application's core. main() only starts the toolkit and calls run.
#pragma once

#include <iosfwd>

/// Exit statuses of the program.
enum ProgramStatus : int {
    ProgramSuccess = 0,
    ProgramBadInput = 1, ///< an input could not be read or an output not written
    ProgramUsage = 2,    ///< the command line itself was wrong
};

/// Runs one command line (argv[0] is the program's name); messages go to err, results and
/// help to out.
int runProgram(int argc, char** argv, std::ostream& out, std::ostream& err);
