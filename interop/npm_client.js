// npm's soap against a service: npm_client.js WSDL. Ends with an error at the first wrong value.
const assert = require("node:assert/strict");
const soap = require("soap");

const name = "Gärten & <Höfe> 🌱";
const written = new Date("2026-03-04T05:06:07Z");
const content = Buffer.concat([...Array(1200).fill(Buffer.from(Array.from({ length: 256 }, (_, i) => i))), Buffer.from("end")]);
const thumbnail = Buffer.from("\x89PNG\0", "latin1");
const anna = { username: "anna", pass: "correct horse" };

// The client leaves out an element whose value is null; a missing identifier therefore needs xsi:nil.
const record = (identifier, mapName, more) => ({
  MapName: mapName, MapId: identifier ?? { attributes: { "xsi:nil": "true" } }, ...(more?.Author && { Author: more.Author }),
  LastModified: written.toISOString(), Created: written.toISOString(),
  ...(more?.Thumbnail && { Thumbnail: more.Thumbnail.toString("base64") }), IsPublished: true,
  ...(more?.MapContent && { MapContent: more.MapContent.toString("base64") }),
  AllowInclusion: false, Version: 0, Format_IsTwlx: true,
});

async function main(wsdl) {
  const client = await soap.createClientAsync(wsdl, { forceSoap12Headers: true });
  const call = async (operation, values) => (await client[operation + "Async"]({ ...anna, ...values }))[0][operation + "Result"];
  // Some versions of the client make arrays, dates and booleans by the WSDL; with others they are texts.
  const maps = async () => {
    const answer = await call("GetMapsList_NEW_DESKTOP", { IsPublished: false });
    return [].concat(answer.DesktopInfoObjectList?.DesktopInfoClass ?? []);
  };

  assert.equal((await call("Login", {})).DesktopLoginValue, "Success");
  assert.equal((await call("Login", { pass: "wrong" })).DesktopLoginValue, "NotAUser");
  const created = record(null, name, { Author: "Zoë", MapContent: content, Thumbnail: thumbnail });
  const save = { DesktopInfo: created, IsForced: false };
  const saved = await call("SaveMap_NEW_DESKTOP", save);
  assert.equal(saved.DesktopMapAccess, "Success");
  const id = saved.DesktopInfoClass.MapId;
  assert.equal((await call("SaveMap_NEW_DESKTOP", save)).DesktopMapAccess, "FileExists");
  const listed = (await maps()).map((m) =>
    [m.MapId, m.MapName, m.Author, m.Thumbnail, new Date(m.LastModified), String(m.IsPublished)]);
  assert.deepEqual(listed, [[id, name, "Zoë", thumbnail.toString("base64"), written, "true"]]);
  const got = await call("GetMapContent_NEW_DESKTOP", { DesktopInfo: record(id, name) });
  assert.equal(got.DesktopMapAccess, "Success");
  assert.ok(content.equals(Buffer.from(got.DesktopInfo.MapContent, "base64")), "content");
  assert.equal((await call("RenameDesktopMap", { DesktopInfo: record(id, "Courtyards") })).DesktopMapAccess, "Success");
  assert.deepEqual((await maps()).map((m) => m.MapName), ["Courtyards"]);
  assert.equal((await call("DeleteDesktopMap", { DesktopInfo: record(id, name) })).DesktopMapAccess, "Success");
  assert.deepEqual(await maps(), []);
  const gone = await call("GetMapContent_NEW_DESKTOP", { DesktopInfo: record(id, name) });
  assert.equal(gone.DesktopMapAccess, "MapRemoved");
}

main(process.argv[2]).catch((error) => {
  console.error(error.message);
  process.exitCode = 1;
});
