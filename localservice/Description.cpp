#include "localservice/Description.h"

#include "Deployment.h"
#include "protocol/desktopservice.h"

#include <QtCore/QString>

namespace localservice {
namespace {

using tarnwell::Occurs;
using tarnwell::Row;
using tarnwell::Type;

std::string local(const char* name) { return tarnwell::localPart(name); }

/// Calls `use` for every type of the service's own namespace: enumerations, records, messages, in this order.
template <class Use> void forServiceTypes(Use use) {
  for (int number = 1; number < SOAP_TYPE_count; ++number) {
    const Type& type = *tarnwell::findType(number);
    if (std::string_view(type.name).starts_with("dsns:"))
      use(type);
  }
}

/// The XML Schema element of a row.
std::string schemaElement(const Row& row) {
  std::string text =
      "<element name=\"" + local(row.tag) + "\" type=\"" + tarnwell::typeOf(row.type).name + "\" minOccurs=\"";
  text += row.occurs == Occurs::Required || row.occurs == Occurs::RequiredNillable ? '1' : '0';
  text += row.occurs == Occurs::Repeated ? "\" maxOccurs=\"unbounded\"" : "\" maxOccurs=\"1\"";
  const bool nillable = row.occurs == Occurs::RequiredNillable || row.occurs == Occurs::Repeated;
  return text + (nillable ? " nillable=\"true\"/>\n" : "/>\n");
}

std::string schemaSequence(const Type& type, const std::string& indent) {
  std::string text = indent + "<sequence>\n";
  for (std::size_t i = 0; i < type.rowCount; ++i)
    text += indent + "  " + schemaElement(type.rows[i]);
  return text + indent + "</sequence>\n";
}

std::string schemaType(const Type& type) {
  const std::string name = " name=\"" + local(type.name) + "\">\n";
  if (type.names) {
    std::string text = "      <simpleType" + name + "        <restriction base=\"xsd:string\">\n";
    for (std::size_t i = 0; i < type.nameCount; ++i)
      text += std::string("          <enumeration value=\"") + type.names[i].text + "\"/>\n";
    return text + "        </restriction>\n      </simpleType>\n";
  }
  if (type.message)
    return "      <element" + name + "        <complexType>\n" + schemaSequence(type, "          ") +
           "        </complexType>\n      </element>\n";
  return "      <complexType" + name + schemaSequence(type, "        ") + "      </complexType>\n";
}

/// The texts that `format` returns for all operations, one after the other.
template <class Format> std::string forOperations(Format format) {
  std::string text;
  for (const tarnwell::Operation& operation : tarnwell::operations)
    text += format(operation);
  return text;
}

const char* occursText(Occurs occurs) {
  switch (occurs) {
  case Occurs::Required:
    return "1..1";
  case Occurs::RequiredNillable:
    return "1..1, nil when null";
  case Occurs::Optional:
    return "0..1";
  case Occurs::Repeated:
    return "0..unbounded";
  }
  return "";
}

std::string typeTable(const Type& type) {
  std::string text = "\n### " + std::string(type.name) + "\n\n";
  if (type.names) {
    text += "| text | value |\n|---|---|\n";
    for (std::size_t i = 0; i < type.nameCount; ++i)
      text += std::string("| ") + type.names[i].text + " | " + std::to_string(type.names[i].value) + " |\n";
    return text;
  }
  text += "| element | type | occurs |\n|---|---|---|\n";
  for (std::size_t i = 0; i < type.rowCount; ++i) {
    const Row& row = type.rows[i];
    text +=
        std::string("| ") + row.tag + " | " + tarnwell::typeOf(row.type).name + " | " + occursText(row.occurs) + " |\n";
  }
  return text;
}

} // namespace

std::string serviceDescription(const std::string& endpoint) {
  const QString address = QString::fromStdString(endpoint.empty() ? TARNWELL_TEST_ENDPOINT : endpoint).toHtmlEscaped();
  std::string text = R"(<?xml version="1.0" encoding="UTF-8"?>
<wsdl:definitions name="DesktopService" targetNamespace=")" TARNWELL_SERVICE_NAMESPACE R"("
    xmlns:dsns=")" TARNWELL_SERVICE_NAMESPACE R"("
    xmlns:dsns2=")" TARNWELL_TYPES_NAMESPACE R"("
    xmlns:xsd="http://www.w3.org/2001/XMLSchema"
    xmlns:soap12="http://schemas.xmlsoap.org/wsdl/soap12/"
    xmlns:wsdl="http://schemas.xmlsoap.org/wsdl/">
  <wsdl:types>
    <schema targetNamespace=")" TARNWELL_TYPES_NAMESPACE R"(" xmlns="http://www.w3.org/2001/XMLSchema">
      <simpleType name="guid">
        <restriction base="xsd:string"/>
      </simpleType>
    </schema>
    <schema targetNamespace=")" TARNWELL_SERVICE_NAMESPACE R"(" elementFormDefault="qualified"
        xmlns="http://www.w3.org/2001/XMLSchema">
      <import namespace=")" TARNWELL_TYPES_NAMESPACE R"("/>
)";
  forServiceTypes([&text](const Type& type) { text += schemaType(type); });
  text += "    </schema>\n  </wsdl:types>\n";
  text += forOperations([](const tarnwell::Operation& operation) {
    const std::string name = operation.name;
    return "  <wsdl:message name=\"" + name + "In\">\n    <wsdl:part name=\"parameters\" element=\"" +
           tarnwell::typeOf(operation.request).name + "\"/>\n  </wsdl:message>\n  <wsdl:message name=\"" + name +
           "Out\">\n    <wsdl:part name=\"parameters\" element=\"" + tarnwell::typeOf(operation.response).name +
           "\"/>\n  </wsdl:message>\n";
  });
  text += "  <wsdl:portType name=\"DesktopServiceSoap\">\n";
  text += forOperations([](const tarnwell::Operation& operation) {
    const std::string name = operation.name;
    return "    <wsdl:operation name=\"" + name + "\">\n      <wsdl:input message=\"dsns:" + name +
           "In\"/>\n      <wsdl:output message=\"dsns:" + name + "Out\"/>\n    </wsdl:operation>\n";
  });
  text += "  </wsdl:portType>\n  <wsdl:binding name=\"DesktopServiceSoap12\" type=\"dsns:DesktopServiceSoap\">\n"
          "    <soap12:binding style=\"document\" transport=\"http://schemas.xmlsoap.org/soap/http\"/>\n";
  text += forOperations([](const tarnwell::Operation& operation) {
    return "    <wsdl:operation name=\"" + std::string(operation.name) + "\">\n      <soap12:operation soapAction=\"" +
           operation.action +
           "\" style=\"document\"/>\n      <wsdl:input><soap12:body use=\"literal\"/></wsdl:input>\n"
           "      <wsdl:output><soap12:body use=\"literal\"/></wsdl:output>\n    </wsdl:operation>\n";
  });
  return text +
         "  </wsdl:binding>\n  <wsdl:service name=\"DesktopService\">\n"
         "    <wsdl:port name=\"DesktopServiceSoap12\" binding=\"dsns:DesktopServiceSoap12\">\n"
         "      <soap12:address location=\"" +
         address.toStdString() +
         "\"/>\n"
         "    </wsdl:port>\n  </wsdl:service>\n</wsdl:definitions>\n";
}

std::string protocolTables() {
  std::string text = "# The protocol on the wire\n\nSOAP 1.2 over HTTP POST, document/literal. `tarnwell-localservice "
                     "--describe tables` "
                     "prints these tables from the rows\nthat the library uses to read and write messages.\n\n"
                     "## Namespaces\n\n| prefix | namespace | also accepted |\n|---|---|---|\n";
  for (const Namespace& row : tarnwell::namespaceTable)
    if (row.id)
      text += std::string("| ") + row.id + " | " + row.ns + " | " + (row.in ? row.in : "") + " |\n";
  text += "\n## Operations\n\nThe action is the service namespace followed by the operation's name.\n\n"
          "| operation | request | response | result |\n|---|---|---|---|\n";
  text += forOperations([](const tarnwell::Operation& operation) {
    const Row& result = *tarnwell::typeOf(operation.response).rows;
    return std::string("| ") + operation.name + " | " + tarnwell::typeOf(operation.request).name + " | " +
           tarnwell::typeOf(operation.response).name + " | " + tarnwell::typeOf(result.type).name + " |\n";
  });
  text += "\n## Types and messages\n";
  forServiceTypes([&text](const Type& type) { text += typeTable(type); });
  return text;
}

} // namespace localservice
