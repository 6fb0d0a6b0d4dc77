#include "protocol/schema/Namespaces.h"

#include "Deployment.h"

namespace tarnwell {

// Where a row has a pattern, an answer may use any namespace that matches it. That row 1 names the SOAP 1.2 envelope is
// what makes the runtime speak SOAP 1.2.
constexpr Namespace namespaceTable[namespaceCount] = {
    {"SOAP-ENV", "http://www.w3.org/2003/05/soap-envelope", "http://www.w3.org/2003/05/soap-envelope", nullptr},
    {"SOAP-ENC", "http://www.w3.org/2003/05/soap-encoding", "http://www.w3.org/2003/05/soap-encoding", nullptr},
    {"xsi", "http://www.w3.org/2001/XMLSchema-instance", "http://www.w3.org/*/XMLSchema-instance", nullptr},
    {"xsd", "http://www.w3.org/2001/XMLSchema", "http://www.w3.org/*/XMLSchema", nullptr},
    {"dsns2", TARNWELL_TYPES_NAMESPACE, nullptr, nullptr},
    {"dsns3", TARNWELL_SERVICE_NAMESPACE "DesktopServiceSoap", nullptr, nullptr},
    {"dsns", TARNWELL_SERVICE_NAMESPACE, nullptr, nullptr},
    {"dsns4", TARNWELL_SERVICE_NAMESPACE "DesktopServiceSoap12", nullptr, nullptr},
    {nullptr, nullptr, nullptr, nullptr},
};

} // namespace tarnwell

using tarnwell::namespaceTable;

// The runtime's own name for the table, which every new context starts with.
struct Namespace namespaces[] = {namespaceTable[0], namespaceTable[1], namespaceTable[2],
                                 namespaceTable[3], namespaceTable[4], namespaceTable[5],
                                 namespaceTable[6], namespaceTable[7], namespaceTable[8]};
