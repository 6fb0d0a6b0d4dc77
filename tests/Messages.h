// The service's messages as texts, as other servers write them: prefix "soap:" for the envelope, the service's
// namespace as default namespace, other prefixes than ours.
#pragma once

#include "Deployment.h"

#include <QtCore/QRegularExpression>
#include <string>

inline std::string element(const std::string& name, const std::string& content) {
  return "<" + name + ">" + content + "</" + name + ">";
}

namespace message {

inline const std::string envelopeNamespace = "http://www.w3.org/2003/05/soap-envelope";

/// An envelope as the service sends it. In `body` the prefixes soap, xsi, x (XML Schema), enc (SOAP encoding) and d
/// (the service) are declared, and the service's namespace is the default one.
inline std::string envelope(const std::string& body, const std::string& header = {}) {
  return "<?xml version=\"1.0\" encoding=\"utf-8\"?><soap:Envelope xmlns:soap=\"" + envelopeNamespace +
         "\" xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" xmlns:x=\"http://www.w3.org/2001/XMLSchema\""
         " xmlns:enc=\"http://www.w3.org/2003/05/soap-encoding\" xmlns:d=\"" TARNWELL_SERVICE_NAMESPACE
         "\" xmlns=\"" TARNWELL_SERVICE_NAMESPACE "\">" +
         header + "<soap:Body>" + body + "</soap:Body></soap:Envelope>";
}

/// The response element of `operation`, whose result element holds `result`.
inline std::string response(const std::string& operation, const std::string& result) {
  return element(operation + "Response", element(operation + "Result", result));
}

/// A whole answer.
inline std::string answer(const std::string& operation, const std::string& result) {
  return envelope(response(operation, result));
}

inline std::string loginValue(const std::string& value) { return element("DesktopLoginValue", value); }
/// The login object of an answer; none for "-".
inline std::string loginObject(const std::string& value) {
  return value == "-" ? "" : element("DesktopLoginResponseObject", loginValue(value));
}
/// The beginning of a result that concerns a map, "-" as above.
inline std::string outcome(const std::string& login, const std::string& access) {
  return (access == "-" ? "" : element("DesktopMapAccess", access)) + loginObject(login);
}
/// The result of a listing whose list holds `entries`.
inline std::string listing(const std::string& entries, const std::string& login = "Success") {
  return element("DesktopInfoObjectList", entries) + loginObject(login);
}
inline std::string fault(const std::string& code) {
  return envelope(
      "<soap:Fault><soap:Code><soap:Value>" + code +
      "</soap:Value></soap:Code><soap:Reason><soap:Text xml:lang=\"en\">no</soap:Text></soap:Reason></soap:Fault>");
}

/// The end of a request from its body on, byte by byte as the library sends it; `content` without prefixes.
inline std::string sent(const std::string& content) {
  QString whole = QString::fromStdString(content);
  whole.replace(QRegularExpression("<(\\w+)/>"), "<\\1></\\1>")
      .replace(QRegularExpression("<(/?)(\\w)"), "<\\1dsns:\\2");
  return "<SOAP-ENV:Body>" + whole.toStdString() + "</SOAP-ENV:Body></SOAP-ENV:Envelope>\r\n";
}

} // namespace message
