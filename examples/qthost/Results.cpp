#include "Results.h"

#include "service/ServiceResult.h"

#include <algorithm>
#include <iterator>

QString explanation(int result) {
  struct Row {
    ServiceResult result;
    const char* text;
  };
  static constexpr Row rows[] = {
      {ResultOk, "Done."},
      {ResultFailed, "The service cannot be reached, or it failed. Try again later."},
      {ResultNotAUser, "The service does not know this user name and password. Log in again."},
      {ResultNotPremiumAccount, "This needs a premium account."},
      {ResultFileExists, "A map with this identity is already stored."},
      {ResultNoAccess, "This map belongs to somebody else."},
      {ResultNoSuchFile, "The file is a folder, or it is gone."},
      {ResultOngoingCollaboration, "Others are working on this map. Try again when they have finished."},
      {ResultMapRemoved, "This map was removed from the service."},
  };
  const auto* const row =
      std::find_if(std::begin(rows), std::end(rows), [&](const Row& r) { return r.result == result; });
  return row != std::end(rows) ? row->text : QString("Unknown result %1.").arg(result);
}
