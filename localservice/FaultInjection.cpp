#include "localservice/FaultInjection.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>

namespace localservice {

namespace {

tarnwell::OperationIndex operationNamed(const std::string& name) {
  const auto* const found = std::find_if(std::begin(tarnwell::operations), std::end(tarnwell::operations),
                                         [&name](const tarnwell::Operation& known) { return known.name == name; });
  if (found == std::end(tarnwell::operations))
    throw std::invalid_argument("--fail: there is no operation " + name);
  return static_cast<tarnwell::OperationIndex>(found - std::begin(tarnwell::operations));
}

/// Sets `value` to the enumeration's value with this text. False: there is none.
template <class Enumeration> bool setByText(int number, const std::string& text, Enumeration& value) {
  const tarnwell::Type& type = tarnwell::typeOf(number);
  for (std::size_t i = 0; i < type.nameCount; ++i) {
    if (text != type.names[i].text)
      continue;
    value = static_cast<Enumeration>(type.names[i].value);
    return true;
  }
  return false;
}

bool setResult(tarnwell::OperationIndex index, const std::string& text, InjectedResponse& response) {
  const tarnwell::Operation& operation = tarnwell::operations[static_cast<std::size_t>(index)];
  const int result = tarnwell::typeOf(operation.response).rows->type;
  const bool hasAccess = result == SOAP_TYPE_dsns__GetMapResponse || result == SOAP_TYPE_dsns__MapActionResponse;
  if (hasAccess && setByText(SOAP_TYPE_dsns__DesktopMapAccess, text, response.access))
    return true;
  return result != SOAP_TYPE_dsns__DesktopVersioningClass &&
         setByText(SOAP_TYPE_dsns__DesktopLoginEnumerators, text, response.login);
}

} // namespace

void FaultInjection::add(const std::string& rule) {
  const std::size_t equals = rule.find('=');
  if (equals == std::string::npos)
    throw std::invalid_argument("--fail takes OPERATION=RESULT, OPERATION=fault or OPERATION=drop");
  const tarnwell::OperationIndex index = operationNamed(rule.substr(0, equals));
  const std::string text = rule.substr(equals + 1);
  InjectedResponse response;
  if (text == "fault")
    response.kind = InjectedResponse::Fault;
  else if (text == "drop")
    response.kind = InjectedResponse::Drop;
  else if (!setResult(index, text, response))
    throw std::invalid_argument("--fail: " + rule.substr(0, equals) + " has no result " + text);
  responses[index] = response;
}

const InjectedResponse* FaultInjection::find(tarnwell::OperationIndex index) const {
  const auto found = responses.find(index);
  return found == responses.end() ? nullptr : &found->second;
}

} // namespace localservice
