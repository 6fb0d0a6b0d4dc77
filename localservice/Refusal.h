// Why a request is refused: HTTP status, and a text that tells the client's developer what to change. Any thread.
#pragma once

#include <exception>

namespace localservice {

/// One reason, a constant.
struct Refusal {
  int status;
  const char* reason;
};

namespace refusals {

inline constexpr Refusal noHttp{400, "this is no HTTP request that the service understands"};
inline constexpr Refusal badHost{400, "the header field Host contains characters that no host name has"};
inline constexpr Refusal badLength{400, "Content-Length is no number, or stands beside Transfer-Encoding"};
inline constexpr Refusal badChunk{400, "a chunk's size is no hexadecimal number, or its data have another length"};
inline constexpr Refusal cutOff{400, "the connection ended before the request did"};
inline constexpr Refusal manyAttributes{400, "a request has at most 256 different attribute names"};
inline constexpr Refusal fromWebPage{403, "requests with the header field Origin are refused: any web page could send "
                                          "them to this machine"};
inline constexpr Refusal noSuchPath{404, "the service is at the path /service/desktopservice.asmx"};
inline constexpr Refusal noSuchMethod{405, "operations are sent by POST; GET with ?wsdl returns the description"};
inline constexpr Refusal tooSlow{408, "the head of a request takes at most ten seconds, and its content has to arrive "
                                      "at 16 KiB per second or more"};
inline constexpr Refusal noLength{411, "a request needs Content-Length or Transfer-Encoding: chunked"};
inline constexpr Refusal tooLong{413, "the request is longer than the service's option --max-request allows"};
inline constexpr Refusal muchMarkup{413, "a request has at most 256 KiB beside its byte blocks (MapContent, Thumbnail, "
                                         "Preview, OldTwlxBackUp, bytes)"};
inline constexpr Refusal otherType{415, "the content has to be application/soap+xml or text/xml: MTOM, attachments and "
                                        "web forms are not supported; send byte blocks as base64 in the envelope"};
inline constexpr Refusal compressed{415, "compressed content is not supported: send it without Content-Encoding"};
inline constexpr Refusal longHead{431, "the head of a request has at most 64 KiB"};
inline constexpr Refusal otherCoding{501, "the only transfer coding that is supported is chunked"};
inline constexpr Refusal noMemory{503, "too many large requests at once for the service's option --max-memory: send it "
                                       "again later"};

} // namespace refusals

/// Refuses a request while its operation is carried out.
struct Refused : std::exception {
  explicit Refused(const Refusal& why) : refusal(why) {}
  const char* what() const noexcept override { return refusal.reason; }
  const Refusal& refusal;
};

} // namespace localservice
