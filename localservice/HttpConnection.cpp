#include "localservice/HttpConnection.h"

#include "protocol/runtime/RuntimeInternals.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <poll.h>
#include <string_view>
#include <sys/socket.h>

namespace localservice {

namespace {

constexpr std::uint64_t longestHead = std::uint64_t{64} << 10; // bytes
/// Bytes that are received at once. The limits are checked after each piece, so that at most one piece is read beyond a
/// limit.
constexpr std::size_t longestPiece = std::size_t{16} << 10;
constexpr int lingerStallMilliseconds = 2000;
constexpr std::chrono::seconds lingerLimit{30};

std::string lowerCase(std::string text) {
  for (char& c : text)
    c = static_cast<char>(c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c);
  return text;
}

/// A decimal number and nothing else.
bool parseLength(const std::string& text, std::uint64_t& length) {
  const char* const end = text.data() + text.size();
  const auto [parsed, failure] = std::from_chars(text.data(), end, length);
  return failure == std::errc() && parsed == end;
}

/// Whether all characters are printable ASCII. An address in the description is made of them.
bool isHostName(const std::string& text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c > ' ' && c < 0x7f; });
}

bool isReady(int socket, short events, int milliseconds) {
  pollfd waiting = {socket, events, 0};
  return poll(&waiting, 1, milliseconds) > 0;
}

} // namespace

HttpConnection::HttpConnection(struct soap* context, const HttpService& httpService, Reservation& memory,
                               TracedExchange* trace)
    : service(httpService), soap(context), parseAsRuntime(context->fparse), reservation(memory), traced(trace),
      toReceive(longestHead) {
  soap->user = this;
  soap->recv_maxlength = service.longestContent + 2 * longestHead; // bytes; it also limits a chunk
  soap->fparse = [](struct soap* parsing) { return of(parsing).parseHead(); };
  // The runtime's own function would allow cross-origin requests and attachments.
  soap->fparsehdr = [](struct soap* parsing, const char* name, const char* value) {
    std::string& known = of(parsing).fields[lowerCase(name)];
    known += (known.empty() ? "" : ", ") + std::string(value);
    return SOAP_OK;
  };
  soap->frecv = [](struct soap* reading, char* to, std::size_t room) { return of(reading).receive(to, room); };
  soap->fpreparerecv = [](struct soap* reading, const char* piece, std::size_t size) {
    return of(reading).checkContent(piece, size);
  };
  soap->fsend = [](struct soap* writing, const char* bytes, std::size_t size) { return of(writing).send(bytes, size); };
  chunks.emplace(soap, [](struct soap* reading, tarnwell::Chunks::Wrong wrong) {
    return of(reading).refuse(wrong == tarnwell::Chunks::Wrong::Length ? refusals::tooLong : refusals::badChunk);
  });
}

std::string HttpConnection::field(const std::string& name) const {
  const auto found = fields.find(name);
  return found == fields.end() ? std::string() : found->second;
}

int HttpConnection::parseHead() {
  const int code = parseAsRuntime(soap);
  isHeadOnly = soap->status == SOAP_HEAD;
  if (code || refusedFor) // the runtime may return 0 for a head that was refused
    return soap->error = refusedFor ? refusedFor->status : code;
  isInContent = true;
  const Refusal* refusal = isHostName(field("host")) ? nullptr : &refusals::badHost;
  if (!refusal && soap->status == SOAP_POST)
    refusal = service.checkHead(*this, soap);
  if (!refusal)
    refusal = readFraming();
  if (!refusal && soap->status == SOAP_POST && !isChunked && !reservation.add(soap->length))
    refusal = &refusals::noMemory;
  rate = MinimumRate();
  return soap->error = refusal ? refuse(*refusal) : SOAP_OK;
}

int HttpConnection::refuse(const Refusal& refusal) {
  if (!refusedFor)
    refusedFor = &refusal;
  return refusedFor->status;
}

/// Where the content ends (RFC 9112 section 6).
const Refusal* HttpConnection::readFraming() {
  const std::string length = field("content-length");
  const std::string coding = lowerCase(field("transfer-encoding"));
  const std::uint64_t arrived = tarnwell::unread(soap).size();
  isChunked = coding == "chunked";
  if (isChunked) {
    if (!length.empty())
      return &refusals::badLength;
    soap->imode = (soap->imode & ~static_cast<soap_mode>(SOAP_IO)) | SOAP_IO_CHUNK;
    toReceive = 2 * service.longestContent; // twice as much, for the framing of small chunks
    return nullptr;
  }
  if (!coding.empty())
    return &refusals::otherCoding;
  std::uint64_t announced = 0;
  if (!length.empty() && !parseLength(length, announced))
    return &refusals::badLength;
  if (announced > service.longestContent)
    return &refusals::tooLong;
  if (length.empty() && soap->status == SOAP_POST)
    return &refusals::noLength;
  soap->length = announced;
  soap->body = announced != 0;
  soap->buflen -= static_cast<std::size_t>(arrived - std::min(arrived, announced)); // drops bytes after the content
  toReceive = announced - std::min(arrived, announced);
  return nullptr;
}

std::size_t HttpConnection::receive(char* to, std::size_t room) {
  const std::size_t most = static_cast<std::size_t>(std::min<std::uint64_t>({room, longestPiece, toReceive}));
  if (most == 0 && (isChunked || !isInContent))
    refuse(isInContent ? refusals::tooLong : refusals::longHead);
  if (most == 0 || refusedFor)
    return 0;
  ssize_t size = recv(soap->socket, to, most, MSG_DONTWAIT);
  if (size < 0 && (errno == EAGAIN || errno == EINTR)) {
    if (!isReady(soap->socket, POLLIN, rate.millisecondsLeft())) {
      refuse(refusals::tooSlow);
      return 0;
    }
    size = recv(soap->socket, to, most, MSG_DONTWAIT);
  }
  if (size <= 0) { // the client has ended the connection
    refuse(refusals::cutOff);
    return 0;
  }
  const auto taken = static_cast<std::size_t>(size);
  received += taken;
  toReceive -= taken;
  if (isInContent)
    rate.moved(taken);
  else if (traced)
    traced->request.addHead(to, taken);
  return taken;
}

int HttpConnection::checkContent(const char* piece, std::size_t size) {
  if (!isInContent || size == 0)
    return SOAP_OK;
  content += size;
  if (traced)
    traced->request.addBody(piece, size);
  const Refusal* refusal = content > service.longestContent ? &refusals::tooLong : markup.check(soap, piece, size);
  if (!refusal && isChunked && !isReserved && content > Reservation::freeOfCharge) {
    isReserved = true; // the length is not known: as much as it may become, at once, so that nobody waits with a part
    refusal = reservation.add(service.longestContent) ? nullptr : &refusals::noMemory;
    rate = MinimumRate();
  }
  return refusal ? refuse(*refusal) : SOAP_OK;
}

void HttpConnection::sendContinue() {
  if (lowerCase(field("expect")) != "100-continue")
    return;
  static_cast<void>(transmit("HTTP/1.1 100 Continue\r\n\r\n"));
}

int HttpConnection::readToEnd() {
  while (static_cast<int>(soap_getchar(soap)) != EOF)
    continue;
  return soap->error = refusedFor ? SOAP_EOF : SOAP_OK;
}

int HttpConnection::send(const char* bytes, std::size_t size) {
  std::string_view left(bytes, size);
  if (isHeadOnly) // the first buffer that is sent contains the whole head
    left = isResponding ? std::string_view() : left.substr(0, left.find("\r\n\r\n") + 4);
  if (!isResponding)
    rate = MinimumRate();
  isResponding = true;
  if (traced)
    traced->response.add(left.data(), left.size());
  return transmit(left);
}

int HttpConnection::transmit(std::string_view left) {
  while (!left.empty()) {
    const ssize_t taken = ::send(soap->socket, left.data(), left.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
    if (taken < 0 && errno != EAGAIN && errno != EINTR)
      return SOAP_EOF;
    if (taken < 0 && !isReady(soap->socket, POLLOUT, rate.millisecondsLeft()))
      return SOAP_EOF;
    if (taken < 0)
      continue;
    left.remove_prefix(static_cast<std::size_t>(taken));
    sent += static_cast<std::uint64_t>(taken);
    rate.moved(static_cast<std::size_t>(taken));
  }
  return SOAP_OK;
}

void HttpConnection::linger() {
  shutdown(soap->socket, SHUT_WR);
  const auto end = std::chrono::steady_clock::now() + lingerLimit;
  char unread[1 << 14];
  while (isReady(soap->socket, POLLIN, lingerStallMilliseconds) &&
         recv(soap->socket, unread, sizeof unread, MSG_DONTWAIT) > 0)
    if (std::chrono::steady_clock::now() > end)
      return;
}

} // namespace localservice
