// Makes an HTTP message readable for people, while it passes: the head as it is, the body with a line for each element.
// Passwords are masked, long texts and byte blocks are cut to their length. Used by Trace. One thread.
#pragma once

#include <cstddef>
#include <string>

namespace localservice {

/// One message. Its body need not be XML: what is no markup counts as text.
class ReadableMessage {
public:
  /// Adds bytes of the head and, after the head's end, of the body.
  void add(const char* bytes, std::size_t size);
  /// Adds bytes of the head; those after its end are dropped.
  void addHead(const char* bytes, std::size_t size);
  void addBody(const char* bytes, std::size_t size);
  /// What was added, UTF-8 as far as the message is. Values of fields with credentials are "***".
  std::string text();

private:
  void addCharacter(char c);
  void endPiece();
  void endMarkup();
  void endText();
  void newLine();

  std::string head;
  std::string body;
  bool isHeadWhole = false;
  std::size_t bodySize = 0; ///< bytes
  bool isOpaque = false;    ///< not in UTF-8: passwords could not be found in it

  // The piece that is read now: markup from "<" on, or text. It is kept up to a limit.
  std::string piece;
  std::size_t pieceSize = 0; ///< bytes
  char last[3] = {};         ///< of the piece
  bool isMarkup = false;

  std::size_t depth = 0;
  bool isAfterStartTag = false;
  std::string masked;           ///< name of the element whose content is masked; empty: none
  std::size_t maskedInside = 0; ///< open elements of the same name inside it
};

} // namespace localservice
