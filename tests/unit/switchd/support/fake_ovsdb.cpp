#include "support/fake_ovsdb.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <exception>
#include <nlohmann/json.hpp>
#include <utility>

using nlohmann::json;

FakeOvsdb::FakeOvsdb(stpswitch::EventLoop *loop, std::string path) : loop_(*loop), path_(std::move(path)) {}

FakeOvsdb::~FakeOvsdb() { stop(); }

void FakeOvsdb::listen() {
  listener_.reset(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path_.copy(address.sun_path, sizeof address.sun_path - 1);
  ASSERT_EQ(::bind(listener_.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address), 0);
  ASSERT_EQ(::listen(listener_.get(), 1), 0);
  acceptable_ = loop_.make_event<&FakeOvsdb::accept_client>(listener_.get(), EV_READ | EV_PERSIST, this);
  wait_for(acceptable_);
}

void FakeOvsdb::stop() {
  acceptable_.reset();
  readable_.reset();
  listener_.reset();
  client_.reset();
  ::unlink(path_.c_str());
}

void FakeOvsdb::send(const std::string &text) {
  size_t sent = 0;
  while (sent < text.size()) {
    const ssize_t taken = ::send(client_.get(), text.data() + sent, text.size() - sent, MSG_NOSIGNAL);
    ASSERT_GT(taken, 0) << "the client is gone or takes nothing";
    sent += static_cast<size_t>(taken);
  }
}

void FakeOvsdb::accept_client() {
  readable_.reset();
  client_.reset(::accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC));
  stream_ = stpswitch::JsonStream();
  ++connections;
  readable_ = loop_.make_event<&FakeOvsdb::read_client>(client_.get(), EV_READ | EV_PERSIST, this);
  wait_for(readable_);
}

void FakeOvsdb::read_client() {
  std::array<char, 65536> buffer{};
  const ssize_t got = ::recv(client_.get(), buffer.data(), buffer.size(), 0);
  if (got <= 0) {
    readable_.reset();
    client_.reset();
    return;
  }
  stream_.add({buffer.data(), static_cast<size_t>(got)});
  try {
    take_requests();
  } catch (const std::exception &error) {
    ADD_FAILURE() << "the client asks what cannot be read: " << error.what();
  }
}

void FakeOvsdb::take_requests() {
  while (const auto request = stream_.next()) {
    received.push_back(*request);
    if (!hangs) {
      answer(*request);
    }
  }
}

void FakeOvsdb::answer(const std::string &request) {
  const json message = json::parse(request);
  const std::string method = message.value("method", "");
  const std::string result = method == "get_schema" ? schema : method == "monitor" ? rows : "[]";
  if (!method.empty() && !result.empty()) {
    send(R"({"error":null,"id":)" + message["id"].dump() + R"(,"result":)" + result + "}");
  }
}
