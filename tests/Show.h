// Schema objects as short texts, so that a table row can say what was read and a failure shows all of it.
#pragma once

#include "protocol/desktopservice.h"

#include <QtCore/QString>

/// " name=value"; nothing for a default. Texts stand in quotes, blocks as their size and bytes.
template <class Value> std::string shown(const char* name, const Value& value) {
  std::string text;
  if constexpr (std::is_pointer_v<Value>) {
    if (!value)
      return "";
    if constexpr (std::is_same_v<Value, xsd__string*>)
      text = "'" + QString::fromStdWString(*value).toStdString() + "'";
    else if constexpr (std::is_same_v<Value, xsd__base64Binary*>)
      text = std::to_string(value->__size) + ":" + std::string(value->__ptr, value->__ptr + value->__size);
    else
      text = value;
  } else {
    if (value == Value())
      return "";
    text = QString::number(static_cast<double>(value), 'g', std::is_same_v<Value, float> ? 9 : 17).toStdString();
  }
  return " " + std::string(name) + "=" + text;
}

inline std::string show(const dsns__DesktopInfoClass* map) {
  if (!map)
    return "null";
  const std::string text = shown("MapName", map->MapName) + shown("MapId", map->MapId) + shown("Author", map->Author) +
                           shown("LastModified", map->LastModified) + shown("Created", map->Created) +
                           shown("Description", map->Description) + shown("Thumbnail", map->Thumbnail) +
                           shown("IsPublished", map->IsPublished) + shown("MapContent", map->MapContent) +
                           shown("AllowInclusion", map->AllowInclusion) + shown("Version", map->Version) +
                           shown("Preview", map->Preview) + shown("OldTwlxBackUp", map->OldTwlxBackUp) +
                           shown("Format_IsTwlx", map->Format_IsTwlx) + shown("Format_Type", map->Format_Type) +
                           shown("Format_Version", map->Format_Version) + shown("Format_Header", map->Format_Header);
  return "{" + text.substr(text.empty() ? 0 : 1) + "}";
}
inline std::string show(const dsns__DesktopLoginResponseClass* login) {
  return login ? "login " + std::to_string(login->DesktopLoginValue) : "no login";
}
inline std::string show(int access, const dsns__DesktopLoginResponseClass* login, const dsns__DesktopInfoClass* map) {
  return std::to_string(access) + " " + show(login) + " " + show(map);
}
inline std::string show(const dsns__GetMapResponse* r) {
  return r ? show(r->DesktopMapAccess, r->DesktopLoginResponseObject, r->DesktopInfo) : "none";
}
inline std::string show(const dsns__MapActionResponse* r) {
  return r ? show(r->DesktopMapAccess, r->DesktopLoginResponseObject, r->DesktopInfoClass) : "none";
}
inline std::string show(const dsns__DesktopVersioningClass* result) {
  return result ? shown("Path", result->Path) + shown("Version", result->Version) : "none";
}
inline std::string show(const dsns__CompleteDesktopResponse* result) {
  if (!result || !result->DesktopInfoObjectList)
    return result ? show(result->DesktopLoginResponseObject) + " no list" : "none";
  std::string text = show(result->DesktopLoginResponseObject);
  for (const dsns__DesktopInfoClass* map : result->DesktopInfoObjectList->DesktopInfoClass)
    text += " " + show(map);
  return text + " end";
}
