// What the command line does with the store apart from serving: accounts, marks, update information, lists.
#pragma once

#include "localservice/Options.h"
#include "localservice/Store.h"

namespace localservice {

/// Does every change and prints every list that `options` ask for; asks for passwords on standard input. Throws
/// StoreError or std::runtime_error, with a text for people.
void administer(Store& store, const Options& options);

} // namespace localservice
