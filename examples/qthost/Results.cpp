#include "Results.h"

#include "service/ServiceResult.h"

#include <QtCore/QCoreApplication>
#include <algorithm>
#include <iterator>

QString explanation(int result) {
  struct Row {
    ServiceResult result;
    const char* text;
  };
  static constexpr Row rows[] = {
      {ResultOk, QT_TRANSLATE_NOOP("Results", "Done.")},
      {ResultFailed, QT_TRANSLATE_NOOP("Results", "The service cannot be reached, or it failed. Try again later.")},
      {ResultNotAUser,
       QT_TRANSLATE_NOOP("Results", "The service does not know this user name and password. Log in again.")},
      {ResultNotPremiumAccount, QT_TRANSLATE_NOOP("Results", "This needs a premium account.")},
      {ResultFileExists, QT_TRANSLATE_NOOP("Results", "A map with this identity is already stored.")},
      {ResultNoAccess, QT_TRANSLATE_NOOP("Results", "This map belongs to somebody else.")},
      {ResultNoSuchFile, QT_TRANSLATE_NOOP("Results", "The file is a folder, or it is gone.")},
      {ResultOngoingCollaboration,
       QT_TRANSLATE_NOOP("Results", "Others are working on this map. Try again when they have finished.")},
      {ResultMapRemoved, QT_TRANSLATE_NOOP("Results", "This map was removed from the service.")},
  };
  const auto* const row =
      std::find_if(std::begin(rows), std::end(rows), [&](const Row& r) { return r.result == result; });
  if (row == std::end(rows))
    return QCoreApplication::translate("Results", "Unknown result %1.").arg(result);
  return QCoreApplication::translate("Results", row->text);
}
