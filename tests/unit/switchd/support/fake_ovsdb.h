// A server of OVSDB that says what a test has it say, on the test's own loop.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "base/event_loop.h"
#include "sources/openvswitch/json_stream.h"
#include "wire/owned_fd.h"

class FakeOvsdb {
 public:
  FakeOvsdb(stpswitch::EventLoop *loop, std::string path);
  ~FakeOvsdb();
  FakeOvsdb(const FakeOvsdb &) = delete;
  FakeOvsdb &operator=(const FakeOvsdb &) = delete;

  void listen();
  // Hangs up, and is not there any more.
  void stop();

  // To the client that has connected last; it must be there.
  void send(const std::string &text);

  // What it answers: the result of get_schema and of monitor. Nothing at all while it hangs.
  std::string schema;
  std::string rows;
  bool hangs = false;

  // What it was sent, and how often somebody has connected.
  std::vector<std::string> received;
  int connections = 0;

 private:
  void accept_client();
  void read_client();
  void take_requests();
  void answer(const std::string &request);

  stpswitch::EventLoop &loop_;
  std::string path_;
  stpplatform::OwnedFd listener_;
  stpplatform::OwnedFd client_;
  stpswitch::JsonStream stream_;
  stpswitch::Event acceptable_;
  stpswitch::Event readable_;
};
