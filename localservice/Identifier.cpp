#include "localservice/Identifier.h"

#include <cctype>
#include <cstring>
#include <stdexcept>
#include <string_view>
#include <sys/random.h>

namespace localservice {

namespace {
constexpr std::string_view nullIdentifier = "00000000-0000-0000-0000-000000000000";
} // namespace

std::string canonicalIdentifier(const char* text) {
  std::string_view given = text ? text : "";
  if (given.size() == nullIdentifier.size() + 2 && given.front() == '{' && given.back() == '}')
    given = given.substr(1, nullIdentifier.size());
  if (given.size() != nullIdentifier.size() || given == nullIdentifier)
    return {};
  std::string identifier;
  for (std::size_t i = 0; i < given.size(); ++i) {
    const auto c = static_cast<unsigned char>(given[i]);
    if (nullIdentifier[i] == '-' ? c != '-' : !std::isxdigit(c))
      return {};
    identifier += static_cast<char>(std::tolower(c));
  }
  return identifier;
}

std::string freshIdentifier() {
  unsigned char random[16];
  if (getrandom(random, sizeof random, 0) != sizeof random)
    throw std::runtime_error("no random numbers");
  random[6] = static_cast<unsigned char>(0x40 | (random[6] & 0x0F)); // version 4
  random[8] = static_cast<unsigned char>(0x80 | (random[8] & 0x3F)); // variant 1
  std::string identifier;
  for (const unsigned char byte : random) {
    if (nullIdentifier[identifier.size()] == '-')
      identifier += '-';
    identifier += "0123456789abcdef"[byte >> 4];
    identifier += "0123456789abcdef"[byte & 0x0F];
  }
  return identifier;
}

} // namespace localservice
