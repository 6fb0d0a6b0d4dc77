// The host's side of a test: a service of the library that talks to a scripted one.
#pragma once

#include "tests/HostOperations.h"
#include "tests/ScriptedService.h"
#include "tests/Table.h"

#include <gtest/gtest.h>

/// A service of the library and the scripted one that it talks to.
class ServiceUnderTest {
public:
  explicit ServiceUnderTest(const std::vector<Reply>& replies) : server(replies) {}
  ServiceUnderTest(const std::string& operation, const std::string& result)
      : ServiceUnderTest({reply(200, message::answer(operation, result))}) {}
  void expectRequest(const std::string& content) const {
    const std::string body = server.request().body;
    EXPECT_EQ(message::sent(content), body.substr(body.find("<SOAP-ENV:Body>")));
  }
  ScriptedService server;
  Host service{server.url(), QString()};
};
