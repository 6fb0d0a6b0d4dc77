#include "localservice/MarkupLimit.h"

#include "protocol/desktopservice.h"
#include "protocol/runtime/RuntimeInternals.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace localservice {

namespace {

constexpr std::size_t longestMarkup = std::size_t{256} << 10; // bytes

/// Whether the latest start tag that the context has read is that of a byte block. A tag with an id does not count: by
/// a reference to its id, the element may have any type.
bool isInBlock(const struct soap* soap) {
  static constexpr const char* blocks[] = {"MapContent", "Thumbnail", "Preview", "OldTwlxBackUp", "bytes"};
  return !*soap->id && std::any_of(std::begin(blocks), std::end(blocks), [soap](const char* name) {
    return std::strcmp(tarnwell::localPart(soap->tag), name) == 0;
  });
}

} // namespace

const Refusal* MarkupLimit::check(const struct soap* soap, const char* piece, std::size_t size) {
  // A long attribute in a block's start tag contains no "<" either, but it fills the runtime's buffer for labels.
  const bool isBlock = isInBlock(soap) && !std::memchr(piece, '<', size) && soap->lablen < longestMarkup;
  if (!isBlock)
    markup += size;
  if (markup > longestMarkup)
    return &refusals::muchMarkup;
  return tarnwell::hasTooManyNames(soap) ? &refusals::manyAttributes : nullptr;
}

} // namespace localservice
