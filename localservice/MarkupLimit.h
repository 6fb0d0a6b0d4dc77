// A limit on everything of a request but its byte blocks, which costs many times its size in memory and, where the
// runtime searches lists, in time. One thread.
#pragma once

#include <cstddef>

struct soap;

namespace localservice {

class MarkupLimit {
public:
  /// Takes note of a piece of content that the context is going to read next. Returns 0, or the HTTP status to refuse
  /// the request with: more than 256 KiB of tags and texts, or more than 256 names of attributes.
  int check(const struct soap* soap, const char* piece, std::size_t size);

private:
  std::size_t markup = 0; ///< bytes
};

} // namespace localservice
