// Elements given by reference: "id" and "href" or "ref" in both orders, and references that lead nowhere.
#include "tests/Table.h"
#include "tests/WireClient.h"

#include <gtest/gtest.h>

namespace {

/// The answer whose list holds `entries`; `after` follows the response element in the body. "M" is the entries'
/// element,
/// "@" stands for two children.
std::string answer(const std::string& entries, const std::string& after) {
  const std::string result = message::response("GetMapsList_NEW_DESKTOP", message::listing(entries)) + after;
  const std::string maps = replaced(replaced(result, "<M ", "<DesktopInfoClass "), "</M>", "</DesktopInfoClass>");
  return message::envelope(replaced(maps, "@", "<MapName>n</MapName><Version>2</Version>"));
}
std::string expanded(const std::string& read) { return replaced(read, "@", "{MapName='n' Version=2}"); }

// Entries of the list, what follows the response element, the entries as read.
const char* const resolved = R"(
<M id="a">@</M><M href="#a"/>                                |                                              | @ @
<M href="#a"/><M id="a">@</M>                                |                                              | @ @
<M href="#a"/><M >@</M> | <M id="a"><MapName>o</MapName></M> | {MapName='o'} @
<M href="#a"/><M href="#a"/>                                 | <M id="a">@</M>                              | @ @
<M ref="a"/><M enc:ref="b"/>                                 | <M id="a">@</M><M enc:id="b">@</M>           | @ @
<M href="#a"/>                                               | <m id="a" xsi:type="d:DesktopInfoClass">@</m> | @
<m id="a" xsi:type="d:DesktopInfoClass">@</m><M href="#a"/>  |                                              | @
<M ><MapName id="t">n</MapName><Author href="#t"/></M> | | {MapName='n' Author='n'}
<M ><MapName href="#t"/></M> | <x:string id="t">n</x:string> | {MapName='n'}
<M ><MapId href="#i"/></M>                                   | <x:string id="i">n</x:string>                | {MapId=n}
<M ><Thumbnail href="#b"/><Preview href="#b"/></M> | <x:base64Binary id="b">QUJD</x:base64Binary> | {Thumbnail=3:ABC Preview=3:ABC}
<M ><IsPublished href="#f"/></M> | <x:boolean id="f">true</x:boolean> | {IsPublished=1}
<M ><Version href="#f"/></M> | <x:float id="f">3</x:float> | {Version=3}
<M xsi:nil="true"/><M >@</M><M xsi:nil="1"/> | | null @ null
<M /><Other/>                                                |                                              | {}
)";
TEST(Reference, IsResolved) {
  forEachArrival(resolved, [](WireClient& client, const auto& row) {
    EXPECT_EQ("login 2 " + expanded(row[2]) + " end", client.list(answer(row[0], row[1]))) << row[0] << " " << row[1];
  });
}

// What must not happen is a crash or a value from nowhere: such a call fails, or reads what the third column begins
// with.
const char* const unresolved = R"(
<M href="#none"/>                                            |                                          |
<M ><MapName href="#none"/></M>                              |                                          | {} end
<M ><IsPublished href="#none"/></M>                          |                                          | {} end
<M ><Thumbnail href="cid:none"/></M> | | {Thumbnail=0:} end
<M href="#a"/><M ><MapName id="a">n</MapName></M>            |                                          |
<M ><MapName id="a">n</MapName></M><M href="#a"/>            |                                          | {MapName='n'}
<M ><Version href="#a"/></M>                                 | <M id="a">@</M>                          | {} end
<M ><MapName href="#a"/></M>                                 | <M id="a"/>                              | {
<M id="a" href="#a"/>                                        |                                          |
<M id="a" href="#b"/><M id="b" href="#a"/>                   |                                          |
<M href="#a"/>                                               | <M id="a" href="#b"/><M id="b" href="#a"/> |
<M id="a">@</M><M id="a"><MapName>o</MapName></M><M href="#a"/> |                                       | @
<M href=""/><M href="#"/>                                    |                                          |
)";
TEST(Reference, ThatLeadsNowhereIsRefusedOrLeavesTheDefault) {
  forEachArrival(unresolved, [](WireClient& client, const auto& row) {
    const std::string read = client.list(answer(row[0], row[1]));
    EXPECT_TRUE(read.find("error ") == 0 || read.find("login 2 " + expanded(row[2])) == 0) << row[0] << row[1] << read;
    EXPECT_EQ(expanded("login 2 @ end"), client.list(answer("<M >@</M>", ""))) << "after " << row[0] << row[1];
  });
}

} // namespace
