<?php
// A map service by PHP's SoapServer, for `php -S`. INTEROP_WSDL is the description; maps are kept in INTEROP_STATE.
$wsdl = getenv("INTEROP_WSDL");
if ($_SERVER["REQUEST_METHOD"] === "GET") {
  readfile($wsdl);
  return;
}

class Service {
  private array $maps;

  public function __construct() {
    $this->maps = @unserialize((string) @file_get_contents(getenv("INTEROP_STATE"))) ?: [];
  }

  /** The login outcome; after "Success", $act returns the result for the map. The user "fault" gets a fault. */
  private function answer(object $request, string $operation, callable $act): array {
    if ($request->username === "fault")
      throw new SoapFault("Receiver", "no <maps> today");
    $isKnown = $request->username === "anna" && $request->pass === "correct horse";
    $result = $isKnown ? $act() : ["DesktopMapAccess" => "None"];
    file_put_contents(getenv("INTEROP_STATE"), serialize($this->maps));
    $login = ["DesktopLoginValue" => $isKnown ? "Success" : "NotAUser"];
    return [$operation . "Result" => $result + ["DesktopLoginResponseObject" => $login]];
  }

  private function change(object $request, string $operation, callable $act): array {
    return $this->answer($request, $operation, function () use ($request, $act) {
      $id = $request->DesktopInfo->MapId;
      return isset($this->maps[$id]) ? $act($id) : ["DesktopMapAccess" => "None"];
    });
  }

  public function Login(object $request): array {
    $answer = $this->answer($request, "Login", fn() => [])["LoginResult"];
    return ["LoginResult" => $answer["DesktopLoginResponseObject"]];
  }

  public function SaveMap_NEW_DESKTOP(object $request): array {
    return $this->answer($request, "SaveMap_NEW_DESKTOP", function () use ($request) {
      $map = $request->DesktopInfo;
      if (!$request->IsForced && in_array($map->MapName, array_column($this->maps, "MapName")))
        return ["DesktopMapAccess" => "FileExists"];
      $map->MapId = $request->IsForced ? $map->MapId : "{67c8770b-44f1-410a-ab9a-f9b5446f13ee}";
      $this->maps[$map->MapId] = (array) $map;
      return ["DesktopMapAccess" => "Success", "DesktopInfoClass" => ["MapContent" => null] + (array) $map];
    });
  }

  private function listed(object $request, string $operation): array {
    $listed = array_map(fn($map) => array_diff_key($map, ["MapContent" => 0]), array_values($this->maps));
    return $this->answer($request, $operation, fn() => ["DesktopInfoObjectList" => ["DesktopInfoClass" => $listed]]);
  }

  public function GetMapsList_NEW_DESKTOP(object $request): array {
    return $this->listed($request, "GetMapsList_NEW_DESKTOP");
  }

  public function GetMapsListLite_NEW_DESKTOP(object $request): array {
    return $this->listed($request, "GetMapsListLite_NEW_DESKTOP");
  }

  public function GetMapContent_NEW_DESKTOP(object $request): array {
    return $this->change($request, "GetMapContent_NEW_DESKTOP",
      fn($id) => ["DesktopMapAccess" => "Success", "DesktopInfo" => $this->maps[$id]]);
  }

  public function RenameDesktopMap(object $request): array {
    return $this->change($request, "RenameDesktopMap", function ($id) use ($request) {
      $this->maps[$id]["MapName"] = $request->DesktopInfo->MapName;
      return ["DesktopMapAccess" => "Success"];
    });
  }

  public function DeleteDesktopMap(object $request): array {
    return $this->change($request, "DeleteDesktopMap", function ($id) {
      unset($this->maps[$id]);
      return ["DesktopMapAccess" => "Success"];
    });
  }
}

$server = new SoapServer($wsdl, ["soap_version" => SOAP_1_2, "cache_wsdl" => WSDL_CACHE_NONE]);
$server->setObject(new Service());
$server->handle();
