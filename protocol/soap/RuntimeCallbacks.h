// The functions that the runtime and the readers expect the binding to supply: the dispatchers over the type table.
// Those for the header and the fault are declared by the runtime itself. They return 0 or the runtime's error code,
// which they also set in the context.
#pragma once

#include "protocol/runtime/Runtime.h"

extern "C" {

/// Reads an element whose type is not known in advance: the type under which its id was referred to before, else the
/// one that its xsi:type or its name says. Returns the object and its type number; null with a tag mismatch, and the
/// element still there, when none of these is known.
void* soap_getelement(struct soap* soap, const char* tag, int* type);
/// Writes any object by its type number.
int soap_putelement(struct soap* soap, const void* value, const char* tag, int id, int type);
/// Marks any object for multi-reference output.
void soap_markelement(struct soap* soap, const void* value, int type);
/// Copy and deletion of values in the runtime's document trees, which this binding does not use.
void* soap_dupelement(struct soap* soap, const void* value, int type);
void soap_delelement(const void* value, int type);
}

/// Reads what follows an element in its parent: targets of references are kept, the rest is skipped.
int soap_getindependent(struct soap* soap);
/// Writes the elements of objects that are referred to more than once, where SOAP 1.1 has them.
int soap_putindependent(struct soap* soap);
/// Skips an element that no reader takes. One with an id is read by its own type and kept as a target of references.
/// Refused: one that must be understood, one of the envelope's namespace, in strict mode any.
int soap_ignore_element(struct soap* soap);
