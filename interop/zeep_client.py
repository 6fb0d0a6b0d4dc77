"""python3-zeep against a service: zeep_client.py WSDL. Ends with an error at the first wrong value."""
import datetime
import sys

import zeep

NAME = "Gärten & <Höfe> 🌱"
CONTENT = bytes(range(256)) * 1200 + b"end"
THUMBNAIL = b"\x89PNG\r\n\x1a\n\0"
WRITTEN = datetime.datetime(2026, 3, 4, 5, 6, 7, tzinfo=datetime.timezone.utc)

service = zeep.Client(sys.argv[1]).service
anna = {"username": "anna", "pass": "correct horse"}


def expect(what, seen, wanted):
    if seen != wanted:
        sys.exit("%s: %.100r instead of %.100r" % (what, seen, wanted))


def record(identifier, name=NAME, **more):
    values = {"MapName": name, "MapId": identifier, "LastModified": WRITTEN, "Created": WRITTEN, "IsPublished": True,
              "AllowInclusion": False, "Version": 0, "Format_IsTwlx": True}
    return dict(values, **more)


def maps():
    found = service.GetMapsList_NEW_DESKTOP(**anna, IsPublished=False).DesktopInfoObjectList
    return found.DesktopInfoClass if found else []


# zeep unwraps an answer of one element.
expect("login", service.Login(**anna), "Success")
expect("refused login", service.Login(username="anna", **{"pass": "wrong"}), "NotAUser")
new = record(None, Author="Zoë", MapContent=CONTENT, Thumbnail=THUMBNAIL)
saved = service.SaveMap_NEW_DESKTOP(**anna, DesktopInfo=new, IsForced=False)
expect("save", saved.DesktopMapAccess, "Success")
identifier = saved.DesktopInfoClass.MapId
again = service.SaveMap_NEW_DESKTOP(**anna, DesktopInfo=new, IsForced=False)
expect("second save", again.DesktopMapAccess, "FileExists")
expect("list", [(m.MapId, m.MapName, m.Author, m.Thumbnail, m.LastModified, m.IsPublished, m.Description) for m in maps()],
       [(identifier, NAME, "Zoë", THUMBNAIL, WRITTEN, True, None)])
got = service.GetMapContent_NEW_DESKTOP(**anna, DesktopInfo=record(identifier))
expect("get", (got.DesktopMapAccess, got.DesktopInfo.MapContent), ("Success", CONTENT))
expect("rename", service.RenameDesktopMap(**anna, DesktopInfo=record(identifier, "Courtyards")).DesktopMapAccess, "Success")
expect("list after the rename", [m.MapName for m in maps()], ["Courtyards"])
expect("delete", service.DeleteDesktopMap(**anna, DesktopInfo=record(identifier)).DesktopMapAccess, "Success")
expect("list after the deletion", maps(), [])
gone = service.GetMapContent_NEW_DESKTOP(**anna, DesktopInfo=record(identifier))
expect("get after the deletion", gone.DesktopMapAccess, "MapRemoved")
