// Asks for a password on the terminal. Used by both programs. One thread.
#pragma once

#include <string>

namespace terminal {

/// Shows `prompt` (UTF-8) on the controlling terminal and reads one line from it without echo. Returns false, with
/// `password` unchanged, when there is no terminal, when it cannot be read, or when the line is longer than 1 KiB.
/// A signal turns the echo on again before it takes effect: Ctrl-C ends the process; Ctrl-Z stops it, and the process
/// asks again when it continues.
[[nodiscard]] bool askPassword(const std::string& prompt, std::string& password);

} // namespace terminal
