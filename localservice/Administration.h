// Carries out the changes and lists that the command line asks for. One thread.
#pragma once

#include "localservice/Options.h"
#include "localservice/Store.h"

namespace localservice {

/// Whether `options` ask for a change or a list.
bool asksForAdministration(const Options& options);
/// Whether they ask for a change that makes a database which does not exist.
bool createsDatabase(const Options& options);
/// Carries out every change and then prints every list of `options`. Reads passwords from the terminal or from standard
/// input. Throws StoreError or std::runtime_error, with a text for people.
void administer(Store& store, const Options& options);

} // namespace localservice
