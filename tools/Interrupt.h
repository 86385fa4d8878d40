// Ctrl-C as a question instead of an end: once it is installed, a request to end the program (the key, a closed
// terminal or pipe, a logoff) only sets a flag that the work asks for between its steps, so that the table is let go.
#pragma once

namespace J4Tool::Interrupt {

/// From here on requests are kept.
/// @param notice  is written to standard error by the first of them; null for nothing. Must last
void Install(const char* notice);

/// Other words for the same.
void SetNotice(const char* notice);

bool Requested();

/// @param what  how far the work has come
/// @throws ToolError when a request has come
void Check(const char* what = "ended before the work was done");

}  // namespace J4Tool::Interrupt
