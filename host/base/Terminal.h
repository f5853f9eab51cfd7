// Standard error as a terminal with one line, the progress, that is drawn again in place.
#pragma once

namespace host {

// Moves the cursor to the start of the line and clears it.
constexpr char const* eraseTerminalLine = "\r\x1b[K";

// Whether standard error is a terminal on which a line can be erased.
bool canEraseTerminalLine();

} // namespace host
