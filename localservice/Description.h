// The service described from the very rows that it is read and written by: in WSDL for programs, as tables for people.
// Any thread.
#pragma once

#include <string>

namespace localservice {

/// WSDL 1.1 of the service at `endpoint`, an http URL, which is escaped; without it that of the test deployment.
/// Document/literal over SOAP 1.2, as clients ask for it with "?wsdl".
std::string serviceDescription(const std::string& endpoint = {});

/// The same for people, in Markdown: namespaces, operations, types.
std::string protocolTables();

} // namespace localservice
