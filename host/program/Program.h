// The program as a whole, from the command line to the exit code.
#pragma once

namespace host {

int runProgram(int argc, char const* const* argv);

} // namespace host
