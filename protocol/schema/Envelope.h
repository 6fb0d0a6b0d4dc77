// The envelope's own types: the header, which has no members, and the fault with its parts in both SOAP versions'
// forms. Plain structures, read and written by rows like the schema's classes; the runtime knows them by these
// names. All of them belong to the context.
#pragma once

#include "protocol/binding/Type.h"

#include <array>

/// The numbers of the envelope's types follow those of the built-in ones.
enum {
  SOAP_TYPE_SOAP_ENV__Header = SOAP_TYPE_afterBuiltin,
  SOAP_TYPE_SOAP_ENV__Code,
  SOAP_TYPE_SOAP_ENV__Reason,
  SOAP_TYPE_SOAP_ENV__Detail,
  SOAP_TYPE_SOAP_ENV__Fault,
  SOAP_TYPE_afterEnvelope
};

/// "SOAP-ENV:Header": no members; whatever a header holds is skipped.
struct SOAP_ENV__Header {
  static constexpr int number = SOAP_TYPE_SOAP_ENV__Header;
};

/// "SOAP-ENV:Code"; subcodes nest.
struct SOAP_ENV__Code {
  /// Qualified name with the prefix of the namespace table ("SOAP-ENV:Receiver").
  char* SOAP_ENV__Value = nullptr;
  SOAP_ENV__Code* SOAP_ENV__Subcode = nullptr;

  using Self = SOAP_ENV__Code;
  static constexpr int number = SOAP_TYPE_SOAP_ENV__Code;
  static constexpr auto rows() {
    return std::array{tarnwell::row<Self, &Self::SOAP_ENV__Value>("SOAP-ENV:Value", SOAP_TYPE_xsd__QName),
                      tarnwell::row<Self, &Self::SOAP_ENV__Subcode>("SOAP-ENV:Subcode")};
  }
};

/// "SOAP-ENV:Reason"
struct SOAP_ENV__Reason {
  char* SOAP_ENV__Text = nullptr;

  using Self = SOAP_ENV__Reason;
  static constexpr int number = SOAP_TYPE_SOAP_ENV__Reason;
  static constexpr auto rows() {
    return std::array{tarnwell::row<Self, &Self::SOAP_ENV__Text>("SOAP-ENV:Text", SOAP_TYPE_string)};
  }
};

/// "SOAP-ENV:Detail": the first element of a type of the binding is kept as that (`fault`, its number in `__type`),
/// anything else as literal XML.
struct SOAP_ENV__Detail {
  char* __any = nullptr;
  int __type = 0;
  void* fault = nullptr;

  static constexpr int number = SOAP_TYPE_SOAP_ENV__Detail;
};

/// "SOAP-ENV:Fault": the members of SOAP 1.1 first, then those of SOAP 1.2.
struct SOAP_ENV__Fault {
  char* faultcode = nullptr;
  char* faultstring = nullptr;
  char* faultactor = nullptr;
  struct SOAP_ENV__Detail* detail = nullptr;
  struct SOAP_ENV__Code* SOAP_ENV__Code = nullptr;
  struct SOAP_ENV__Reason* SOAP_ENV__Reason = nullptr;
  char* SOAP_ENV__Node = nullptr;
  char* SOAP_ENV__Role = nullptr;
  struct SOAP_ENV__Detail* SOAP_ENV__Detail = nullptr;

  using Self = SOAP_ENV__Fault;
  static constexpr int number = SOAP_TYPE_SOAP_ENV__Fault;
  static constexpr auto rows() {
    using tarnwell::row;
    return std::array{row<Self, &Self::faultcode>("faultcode", SOAP_TYPE_xsd__QName),
                      row<Self, &Self::faultstring>("faultstring", SOAP_TYPE_string),
                      row<Self, &Self::faultactor>("faultactor", SOAP_TYPE_string),
                      row<Self, &Self::detail>("detail"),
                      row<Self, &Self::SOAP_ENV__Code>("SOAP-ENV:Code"),
                      row<Self, &Self::SOAP_ENV__Reason>("SOAP-ENV:Reason"),
                      row<Self, &Self::SOAP_ENV__Node>("SOAP-ENV:Node", SOAP_TYPE_string),
                      row<Self, &Self::SOAP_ENV__Role>("SOAP-ENV:Role", SOAP_TYPE_string),
                      row<Self, &Self::SOAP_ENV__Detail>("SOAP-ENV:Detail")};
  }
};

namespace tarnwell {

// How those of them are read and written that are not plain records.
extern const Codec headerCodec;
extern const Codec reasonCodec;
extern const Codec detailCodec;

/// The code of the fault that the context holds, of either SOAP version; null if there is none.
const char* faultCode(const struct soap* soap);

} // namespace tarnwell
