// Arguments, file names and output in UTF-8, whatever the locale. Called once, before QCoreApplication is made.
#pragma once

#include <QtCore/QtGlobal>
#if QT_VERSION_MAJOR < 6
#include <QtCore/QTextCodec>
#else
#include <clocale>
#include <cstring>
#include <langinfo.h>
#endif

namespace terminal {

#if QT_VERSION_MAJOR < 6
/// With LANG=C, Qt 5 would keep only ASCII characters.
inline void useUtf8() { QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8")); }
#else
/// Qt 6 always takes UTF-8, but prints a warning when the locale has another encoding.
inline void useUtf8() {
  if (!std::setlocale(LC_ALL, "") || std::strcmp(nl_langinfo(CODESET), "UTF-8") != 0)
    qputenv("LC_ALL", "C.UTF-8");
}
#endif

} // namespace terminal
