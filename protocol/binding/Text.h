// What stands between an element's tags, read as character data or skipped, without the runtime's readers: those take
// "/>" in a text for the end of a tag. And wide text to and from UTF-8.
#pragma once

#include "protocol/runtime/RuntimeInternals.h"

#include <string>
#include <string_view>

namespace tarnwell {

/// The character data of the element that was just begun, as UTF-8: references and CDATA sections resolved, comments
/// and processing instructions left out, nested elements kept as literal markup.
class Content {
public:
  /// Reads up to the element's end tag. Returns 0 or the runtime's error code, also set in the context.
  [[nodiscard]] int read(struct soap* soap);
  /// What was read. May lie in the receive buffer: valid until the next read from the context.
  std::string_view text() const { return m_text; }
  /// The same without white space around it.
  std::string_view trimmed() const;

private:
  std::string m_collected;
  std::string_view m_text;
};

/// Reads past the element peeked at, with everything in it; before text, up to the end tag of the element that is open.
/// What is passed is kept in `markup`, unless that is null, as XML with the same meaning.
/// Returns 0 or the runtime's error code, also set in the context.
int skipElement(struct soap* soap, std::string* markup = nullptr);
/// The rest of endElement().
[[nodiscard]] int skipToEnd(struct soap* soap, const char* tag);
/// soap_element_end_in: takes the end tag of the element that is open. Skips what nobody has read before it, except in
/// strict mode, in which that is an error.
[[nodiscard]] inline int endElement(struct soap* soap, const char* tag) {
  return takeEndTag(soap) ? SOAP_OK : skipToEnd(soap, tag);
}

/// Replaces `wide` by the code points of `utf8`. A byte that starts no well-formed sequence is taken as ISO 8859-1, as
/// the runtime does.
void decodeUtf8(std::string_view utf8, std::wstring& wide);

/// Writes text as element content: UTF-8 with "&", "<", ">" and carriage return (which readers would turn into a line
/// feed) as references. What XML cannot carry becomes U+FFFD: with it, the service would refuse the whole request.
/// Returns 0 or the runtime's code.
[[nodiscard]] int writeText(struct soap* soap, const std::wstring& wide);
/// The same for text that is UTF-8 already.
[[nodiscard]] int writeText(struct soap* soap, std::string_view utf8);

} // namespace tarnwell
