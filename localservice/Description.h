// Describes the service by the same rows that read and write its messages: as WSDL for programs, as tables for people.
// Any thread.
#pragma once

#include <string>

namespace localservice {

/// WSDL 1.1 of the service at `endpoint`, an http URL, which is escaped here; without `endpoint`, at the test
/// deployment. Document/literal over SOAP 1.2.
std::string serviceDescription(const std::string& endpoint = {});

/// Namespaces, operations and types as Markdown tables.
std::string protocolTables();

} // namespace localservice
