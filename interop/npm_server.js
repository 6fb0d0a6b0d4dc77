// A map service by npm's soap: npm_server.js WSDL. Prints its endpoint when it is ready.
const fs = require("node:fs");
const http = require("node:http");
const soap = require("soap");

const maps = new Map();
const success = { DesktopMapAccess: "Success" };

/** The login outcome; the user "fault" gets a fault. */
const login = ({ username, pass }) => {
  if (username === "fault")
    throw { Fault: { Code: { Value: "soap:Receiver" }, Reason: { Text: "no <maps> today" } } };
  return { DesktopLoginValue: username === "anna" && pass === "correct horse" ? "Success" : "NotAUser" };
};

/** An operation with anna's credentials: the login outcome, and the result of `act` for the request. */
const forAnna = (operation, act) => (request) => {
  const DesktopLoginResponseObject = login(request);
  const isKnown = DesktopLoginResponseObject.DesktopLoginValue === "Success";
  return { [operation + "Result"]: { ...(isKnown ? act(request) : { DesktopMapAccess: "None" }), DesktopLoginResponseObject } };
};

const forMap = (operation, act) => forAnna(operation, ({ DesktopInfo: map }) =>
  maps.has(map.MapId) ? act(maps.get(map.MapId), map) : { DesktopMapAccess: "None" });

const list = () => ({
  DesktopInfoObjectList: { DesktopInfoClass: [...maps.values()].map(({ MapContent, ...description }) => description) },
});

const operations = {
  Login: (request) => ({ LoginResult: login(request) }),
  SaveMap_NEW_DESKTOP: forAnna("SaveMap_NEW_DESKTOP", ({ DesktopInfo: map, IsForced }) => {
    const isForced = String(IsForced) === "true";
    if (!isForced && [...maps.values()].some((other) => other.MapName === map.MapName))
      return { DesktopMapAccess: "FileExists" };
    const { MapContent, ...description } = { ...map, MapId: isForced ? map.MapId : "{67c8770b-44f1-410a-ab9a-f9b5446f13ee}" };
    for (const time of ["LastModified", "Created"])
      description[time] = new Date(description[time]).toISOString();
    maps.set(description.MapId, { ...description, MapContent });
    return { ...success, DesktopInfoClass: description };
  }),
  GetMapsList_NEW_DESKTOP: forAnna("GetMapsList_NEW_DESKTOP", list),
  GetMapsListLite_NEW_DESKTOP: forAnna("GetMapsListLite_NEW_DESKTOP", list),
  GetMapContent_NEW_DESKTOP: forMap("GetMapContent_NEW_DESKTOP", (map) => ({ ...success, DesktopInfo: map })),
  RenameDesktopMap: forMap("RenameDesktopMap", (map, { MapName }) => (map.MapName = MapName, success)),
  DeleteDesktopMap: forMap("DeleteDesktopMap", (map) => (maps.delete(map.MapId), success)),
};

const server = http.createServer((_, response) => response.writeHead(404).end());
server.listen(0, "127.0.0.1", () => {
  const path = "/service/desktopservice.asmx";
  soap.listen(server, {
    path, services: { DesktopService: { DesktopServiceSoap12: operations } },
    xml: fs.readFileSync(process.argv[2], "utf8"), forceSoap12Headers: true,
    callback: () => console.log(`http://127.0.0.1:${server.address().port}${path}`),
  });
});
