"""A map service by python3-spyne, which knows the messages from these classes alone. Prints its endpoint when ready."""
import sys
import wsgiref.simple_server

from spyne import (Application, Array, Boolean, ByteArray, ComplexModel, DateTime, Fault, Float, ServiceBase, Unicode,
                   rpc)
from spyne.protocol.soap import Soap12
from spyne.server.wsgi import WsgiApplication

NAMESPACE = sys.argv[1]


class Record(ComplexModel):
    __namespace__ = NAMESPACE


class LoginOutcome(Record):
    DesktopLoginValue = Unicode


class DesktopInfoClass(Record):
    MapName = Unicode
    MapId = Unicode
    Author = Unicode
    LastModified = DateTime
    Created = DateTime
    Description = Unicode
    Thumbnail = ByteArray
    IsPublished = Boolean
    MapContent = ByteArray
    AllowInclusion = Boolean
    Version = Float
    Format_IsTwlx = Boolean


class Listed(Record):
    DesktopInfoObjectList = Array(DesktopInfoClass)
    DesktopLoginResponseObject = LoginOutcome


class Fetched(Record):
    DesktopMapAccess = Unicode
    DesktopLoginResponseObject = LoginOutcome
    DesktopInfo = DesktopInfoClass


class Changed(Record):
    DesktopMapAccess = Unicode
    DesktopLoginResponseObject = LoginOutcome
    DesktopInfoClass = DesktopInfoClass


def operation(result, *parameters):
    """A method of a service: its parameters after the credentials, its result named as the service's are."""
    def decorate(function):
        names = {"password": "pass"}
        return rpc(Unicode, Unicode, *parameters, _returns=result, _in_variable_names=names,
                   _out_variable_name=function.__name__ + "Result")(function)
    return decorate


maps = {}


def login(username, password):
    if username == "fault":
        raise Fault("Receiver", "no <maps> today")
    return LoginOutcome(DesktopLoginValue="Success" if (username, password) == ("anna", "correct horse") else "NotAUser")


def listed(username, password):
    who = login(username, password)
    found = [stored for stored in maps.values() if who.DesktopLoginValue == "Success"]
    return Listed(DesktopInfoObjectList=found, DesktopLoginResponseObject=who)


def about(result, username, password, info, act):
    """The answer about one map: `act(stored map)` for one that anna has."""
    who = login(username, password)
    stored = maps.get(info.MapId) if who.DesktopLoginValue == "Success" else None
    if stored is None:
        return result(DesktopMapAccess="None", DesktopLoginResponseObject=who)
    return result(DesktopMapAccess="Success", DesktopLoginResponseObject=who, **act(stored))


class Service(ServiceBase):
    @operation(LoginOutcome)
    def Login(ctx, username, password):
        return login(username, password)

    @operation(Changed, DesktopInfoClass, Boolean)
    def SaveMap_NEW_DESKTOP(ctx, username, password, DesktopInfo, IsForced):
        if not IsForced and DesktopInfo.MapName in [stored.MapName for stored in maps.values()]:
            return Changed(DesktopMapAccess="FileExists", DesktopLoginResponseObject=login(username, password))
        if not IsForced:
            DesktopInfo.MapId = "{67c8770b-44f1-410a-ab9a-f9b5446f13ee}"
        maps[DesktopInfo.MapId] = DesktopInfo
        return about(Changed, username, password, DesktopInfo, lambda stored: {"DesktopInfoClass": stored})

    @operation(Listed, Boolean)
    def GetMapsList_NEW_DESKTOP(ctx, username, password, IsPublished):
        return listed(username, password)

    @operation(Listed, Boolean)
    def GetMapsListLite_NEW_DESKTOP(ctx, username, password, IsPublished):
        return listed(username, password)

    @operation(Fetched, DesktopInfoClass)
    def GetMapContent_NEW_DESKTOP(ctx, username, password, DesktopInfo):
        return about(Fetched, username, password, DesktopInfo, lambda stored: {"DesktopInfo": stored})

    @operation(Changed, DesktopInfoClass)
    def RenameDesktopMap(ctx, username, password, DesktopInfo):
        def rename(stored):
            stored.MapName = DesktopInfo.MapName
            return {}
        return about(Changed, username, password, DesktopInfo, rename)

    @operation(Changed, DesktopInfoClass)
    def DeleteDesktopMap(ctx, username, password, DesktopInfo):
        return about(Changed, username, password, DesktopInfo, lambda stored: maps.pop(stored.MapId) and {})


application = Application([Service], NAMESPACE, in_protocol=Soap12(), out_protocol=Soap12())
server = wsgiref.simple_server.make_server("127.0.0.1", 0, WsgiApplication(application))
print("http://127.0.0.1:%d/service/desktopservice.asmx" % server.server_port, flush=True)
server.serve_forever()
