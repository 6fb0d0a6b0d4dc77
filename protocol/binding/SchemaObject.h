// The base of every schema class: the virtual operations in the slot order that the binding's users rely on.
#pragma once

#include "protocol/binding/Reader.h"
#include "protocol/binding/Writer.h"

namespace tarnwell {

/// An object that travels. `soap` of an operation is the context that reads, writes or owns.
class SchemaObject {
public:
  SchemaObject() = default;
  SchemaObject(const SchemaObject&) = default;
  SchemaObject& operator=(const SchemaObject&) = default;

  /// The type's unique number, a SOAP_TYPE_ value.
  virtual int soap_type() const = 0;
  /// Sets every member to its default and records the context.
  virtual void soap_default(struct soap* soap) = 0;
  /// Marks the object graph for multi-reference output.
  virtual void soap_serialize(struct soap* soap) const = 0;
  /// Writes the object as an independent top-level element. Returns 0 or the runtime's error code.
  virtual int soap_put(struct soap* soap, const char* tag, const char* type) const = 0;
  /// Writes the object as element `tag`. Returns 0 or the runtime's error code.
  virtual int soap_out(struct soap* soap, const char* tag, int id, const char* type) const = 0;
  /// Reads a top-level element and what follows it. Null on failure, with the context's error set.
  virtual void* soap_get(struct soap* soap, const char* tag, const char* type) = 0;
  /// Reads the object from element `tag`. Null on failure, with the context's error set.
  virtual void* soap_in(struct soap* soap, const char* tag, const char* type) = 0;
  virtual ~SchemaObject() = default;
};

/// Gives `Class`, the type with this number, its virtual operations; what they do follows from the rows beside the
/// class.
template <class Class, int ownNumber> class SchemaClass : public SchemaObject {
public:
  using Self = Class;
  static constexpr int number = ownNumber;

  int soap_type() const override { return number; }
  void soap_default(struct soap* soap) override { type().setDefault(soap, self()); }
  void soap_serialize(struct soap* soap) const override { serialize(soap, self(), type()); }
  int soap_put(struct soap* soap, const char* tag, const char* name) const override {
    return writeIndependent(soap, tag, self(), name, type());
  }
  int soap_out(struct soap* soap, const char* tag, int id, const char* name) const override {
    return writeElement(soap, tag, id, self(), name, type());
  }
  void* soap_get(struct soap* soap, const char* tag, const char* name) override {
    return readIndependent(soap, tag, self(), name, type());
  }
  void* soap_in(struct soap* soap, const char* tag, const char* name) override {
    return readElement(soap, tag, self(), name, type());
  }

protected:
  /// The row of a member (Row.h).
  template <auto member, class... Rest> static constexpr Row row(const char* tag, Rest... rest) {
    return tarnwell::row<Class, member>(tag, rest...);
  }

private:
  static const Type& type() { return typeOf(number); }
  Class* self() { return static_cast<Class*>(this); }
  const Class* self() const { return static_cast<const Class*>(this); }
};

} // namespace tarnwell
