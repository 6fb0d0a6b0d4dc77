// Limits tags, texts and attributes of a request: these take many times their size in memory, and the runtime searches
// lists of them. Byte blocks are not limited here. One thread.
#pragma once

#include "localservice/Refusal.h"

#include <cstddef>

struct soap;

namespace localservice {

/// Counts the markup of one request.
class MarkupLimit {
public:
  /// Counts a piece of content that the context reads next. Refuses more than 256 KiB of tags and texts, and more
  /// than 256 attributes of an element and namespaces in force. Null: go on.
  const Refusal* check(const struct soap* soap, const char* piece, std::size_t size);

private:
  std::size_t markup = 0; ///< bytes
};

} // namespace localservice
