<?php
// PHP's SoapClient against a service: php_client.php WSDL. Ends with an error at the first wrong value.
const NAME = "Gärten & <Höfe> 🌱";
const ANNA = ["username" => "anna", "pass" => "correct horse"];

$service = new SoapClient($argv[1], ["soap_version" => SOAP_1_2, "cache_wsdl" => WSDL_CACHE_NONE,
  "features" => SOAP_SINGLE_ELEMENT_ARRAYS]);
$content = str_repeat(implode(array_map("chr", range(0, 255))), 1200) . "end";

function expect(string $what, mixed $seen, mixed $wanted): void {
  if ($seen !== $wanted)
    exit_with("$what: " . substr(var_export($seen, true), 0, 200) . " instead of " . substr(var_export($wanted, true), 0, 200));
}

function exit_with(string $message): never {
  fwrite(STDERR, "$message\n");
  exit(1);
}

function record(?string $identifier, string $name, array $more = []): array {
  return $more + ["MapName" => $name, "MapId" => $identifier, "LastModified" => "2026-03-04T05:06:07Z",
    "Created" => "2026-03-04T05:06:07Z", "IsPublished" => true, "AllowInclusion" => false, "Version" => 0,
    "Format_IsTwlx" => true];
}

/** The result of an operation for anna. */
function call(string $operation, array $arguments): object {
  global $service;
  return $service->$operation(ANNA + $arguments)->{$operation . "Result"};
}

function maps(): array {
  $list = call("GetMapsList_NEW_DESKTOP", ["IsPublished" => false])->DesktopInfoObjectList;
  return array_map(fn($map) => [$map->MapId, $map->MapName, $map->Thumbnail ?? null, $map->LastModified, $map->IsPublished],
    $list->DesktopInfoClass ?? []);
}

expect("login", call("Login", [])->DesktopLoginValue, "Success");
$refused = $service->Login(["username" => "anna", "pass" => "wrong"])->LoginResult->DesktopLoginValue;
expect("refused login", $refused, "NotAUser");
$new = ["DesktopInfo" => record(null, NAME, ["MapContent" => $content, "Thumbnail" => "\x89PNG\0"]), "IsForced" => false];
$saved = call("SaveMap_NEW_DESKTOP", $new);
expect("save", $saved->DesktopMapAccess, "Success");
$id = $saved->DesktopInfoClass->MapId;
expect("second save", call("SaveMap_NEW_DESKTOP", $new)->DesktopMapAccess, "FileExists");
expect("list", maps(), [[$id, NAME, "\x89PNG\0", "2026-03-04T05:06:07Z", true]]);
$got = call("GetMapContent_NEW_DESKTOP", ["DesktopInfo" => record($id, NAME)]);
expect("get", [$got->DesktopMapAccess, $got->DesktopInfo->MapContent], ["Success", $content]);
$renamed = call("RenameDesktopMap", ["DesktopInfo" => record($id, "Courtyards")]);
expect("rename", $renamed->DesktopMapAccess, "Success");
expect("list after the rename", array_column(maps(), 1), ["Courtyards"]);
expect("delete", call("DeleteDesktopMap", ["DesktopInfo" => record($id, NAME)])->DesktopMapAccess, "Success");
expect("list after the deletion", maps(), []);
$gone = call("GetMapContent_NEW_DESKTOP", ["DesktopInfo" => record($id, NAME)]);
expect("get after the deletion", $gone->DesktopMapAccess, "MapRemoved");
