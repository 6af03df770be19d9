// A ControllerTask in the test's own process: a real server on a real socket that remembers what it
// was asked and answers as it is told to, rightly or not.

#pragma once

#include <thrift/protocol/TProtocol.h>

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <limits>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "hub_module_types.h"
#include "model/headend_places.h"
#include "tests/support/encoding.h"

namespace lineup::test {

/// One call as it was received. Of the arguments those of `method` are filled.
struct ReceivedCall {
  std::size_t connection = 0;  ///< which connection it came on; the first is 1
  std::string method{};
  apache::thrift::protocol::TMessageType type = apache::thrift::protocol::T_CALL;
  int32_t sequence = 0;
  std::string frame{};                                ///< its bytes, without the frame's header
  korvel::thrift::hub_module::HeadendConfig config;   ///< setHeadendConfig
  korvel::thrift::hub_module::TDTRFInputConfig tdt1;  ///< setTDTRFInputConfig
  korvel::thrift::hub_module::TDTRFInputConfig tdt2;
  korvel::thrift::general::RFInputId::type satId{};  ///< setSATRFInputConfig
  korvel::thrift::hub_module::SATRFInputConfig satConfig;
};

/// How one call is answered. The default is the right answer.
struct Answer {
  enum Kind {
    kResult,                ///< does what is asked and sends the result
    kNotReady,              ///< ControllerTaskIsNotReady
    kApplicationException,  ///< the library's exception for a failed call
    kBytes                  ///< `bytes` as they are, frame headers included
  };
  static constexpr std::size_t kAll = std::numeric_limits<std::size_t>::max();

  Kind kind = kResult;
  std::string bytes{};
  std::string name{};  ///< a method name in place of the call's own
  apache::thrift::protocol::TMessageType type = apache::thrift::protocol::T_REPLY;
  int32_t sequenceOffset = 0;    ///< added to the call's sequence number
  std::string after{};           ///< bytes sent together with the answer, after its frame
  std::size_t sentBytes = kAll;  ///< how much of all this is sent, the frame's header counted
  bool hangsUp = false;          ///< closes the connection then, also when all was sent
  bool stalls = false;           ///< sends `sentBytes`, then nothing until release()
  bool goesOn = false;           ///< release() sends the rest; otherwise it closes the connection
  bool byteByByte = false;       ///< each byte in a packet of its own
  std::chrono::milliseconds pause{0};  ///< after each packet
};

/// An answer of which the first bytes come, and the rest does, or does not, after release().
inline Answer stalled(bool goesOn, std::size_t sentBytes = 5) {
  return {.sentBytes = sentBytes, .stalls = true, .goesOn = goesOn};
}

/// The frame with which getHeadendConfig or getHeadendStatus (`method`) returns the record whose
/// binary encoding is `record`, which may be broken.
std::string recordReply(const std::string& method, const std::string& record);

/// That frame as an answer.
inline Answer recordAnswer(const std::string& method, const std::string& record) {
  return {.kind = Answer::kBytes, .bytes = recordReply(method, record)};
}

class FakeController {
 public:
  /// Listens on 127.0.0.1; port 0 takes a free one. Throws std::system_error if it cannot.
  explicit FakeController(uint16_t port = kControllerPort);
  /// Listens on the Unix socket `path`, which is removed at the end.
  explicit FakeController(const std::string& path);
  /// Closes every connection.
  ~FakeController();
  FakeController(const FakeController&) = delete;
  FakeController& operator=(const FakeController&) = delete;

  uint16_t port() const { return port_; }

  /// The records that it keeps and hands out.
  korvel::thrift::hub_module::HeadendConfig config() const { return held(config_); }
  void setConfig(const korvel::thrift::hub_module::HeadendConfig& config) { hold(config, config_); }
  korvel::thrift::hub_module::HeadendStatus status() const { return held(status_); }
  void setStatus(const korvel::thrift::hub_module::HeadendStatus& status) { hold(status, status_); }

  /// The next calls without an answer of their own yet get `answer`, one call each.
  void answerNext(const Answer& answer);
  /// The next `count` calls without an answer of their own yet get the right one.
  void answerRightly(std::size_t count = 1);
  /// All calls that these two say nothing of get `answer`.
  void answerAll(const Answer& answer) { hold(answer, all_); }

  /// From the next connection on takes requests at this pace, with as little ahead of it as the
  /// system allows, so that a large one blocks whoever sends it.
  void readSlowly(std::size_t bytesASecond) { hold(bytesASecond, bytesASecond_); }

  /// Ends the silence of the stalled calls. Those whose answer `goesOn` get the rest; the others'
  /// connections are closed.
  void release();

  /// The calls received so far.
  std::vector<ReceivedCall> calls() const { return held(calls_); }
  std::vector<std::string> methods() const;
  /// How many connections were accepted so far.
  std::size_t connections() const { return held(connections_); }
  /// How many of them the console has closed after its last call was answered in full.
  std::size_t closedByPeer() const { return held(closedByPeer_); }
  /// How many requests were begun and not sent to their end.
  std::size_t cutShort() const { return held(cutShort_); }
  /// Waits until `count` requests have been begun.
  void waitForBegun(std::size_t count) const {
    waitUntil([&] { return begun_ >= count; });
  }
  /// Waits until `count` calls have been received.
  void waitForCalls(std::size_t count) const {
    waitUntil([&] { return calls_.size() >= count; });
  }
  /// Waits until the console has closed `count` connections.
  void waitForClosed(std::size_t count) const {
    waitUntil([&] { return closedByPeer_ >= count; });
  }

 private:
  template <class Value>
  Value held(const Value& member) const {
    const std::lock_guard lock(mutex_);
    return member;
  }
  template <class Value>
  void hold(const Value& value, Value& member) {
    const std::lock_guard lock(mutex_);
    member = value;
  }
  template <class Condition>
  void waitUntil(Condition condition) const {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, condition);
  }

  void listenOn(int family, const void* address, uint32_t length);
  void serve();
  void serveConnection(int socket);
  bool answerCall(int socket, const std::string& request);
  std::string answerBytes(const ReceivedCall& call, const Answer& answer);
  std::string result(const ReceivedCall& call);
  bool readWhole(int socket, char* bytes, std::size_t size, std::size_t bytesASecond = 0);
  bool waitUntilReadable(int socket) const;

  int listener_ = -1;
  uint16_t port_ = 0;
  std::string path_{};

  mutable std::mutex mutex_;
  mutable std::condition_variable changed_;
  korvel::thrift::hub_module::HeadendConfig config_;
  korvel::thrift::hub_module::HeadendStatus status_;
  std::deque<Answer> next_;
  Answer all_;
  std::vector<ReceivedCall> calls_;
  std::size_t connections_ = 0;
  std::size_t closedByPeer_ = 0;
  std::size_t begun_ = 0;
  std::size_t cutShort_ = 0;
  std::size_t bytesASecond_ = 0;  ///< 0 for as many as come
  uint64_t releases_ = 0;
  bool ending_ = false;

  std::thread thread_;
};

}  // namespace lineup::test
