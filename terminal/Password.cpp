#include "terminal/Password.h"

#include <bsd/readpassphrase.h>
#include <cstring>

namespace terminal {

bool askPassword(const std::string& prompt, std::string& password) {
  char line[1026];
  if (!readpassphrase(prompt.c_str(), line, sizeof line, RPP_REQUIRE_TTY))
    return false;
  const std::string typed = line;
  explicit_bzero(line, sizeof line);
  if (typed.size() == sizeof line - 1) // a longer line: its rest is lost
    return false;
  password = typed;
  return true;
}

} // namespace terminal
