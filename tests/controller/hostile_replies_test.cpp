// Replies that are wrong, broken, or claim more than there is: each is an error at once, none takes
// the memory that it claims.

#include <gtest/gtest.h>
#include <thrift/TApplicationException.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "WebSrv.h"
#include "controller/simple_client.h"
#include "tests/support/encoding.h"
#include "tests/support/fake_controller.h"
#include "tests/support/memory_use.h"
#include "tests/support/random_records.h"

namespace lineup::test {
namespace {

using apache::thrift::TApplicationException;
using apache::thrift::TException;
using apache::thrift::protocol::TBinaryProtocol;
using apache::thrift::protocol::TMessageType;
using apache::thrift::protocol::TType;
using apache::thrift::transport::TTransportException;
using namespace korvel::thrift::hub_module;
using Client = korvel::thrift::utils::SimpleClient<WebSrvClient>;

constexpr int32_t kLongMs = 60000;
constexpr std::size_t kMegabyte = 1000000;

class HostileReplies : public testing::Test {
 protected:
  /// Makes the call of `Record` with a connection of its own and `record` as the target.
  void fetch(HeadendConfig& record) const { connect().getHeadendConfig(record); }
  void fetch(HeadendStatus& record) const { connect().getHeadendStatus(record); }

  /// Expects that a fetch answered so fails for another reason than a wait that took too long, and
  /// that the record is untouched.
  void expectRefused(const Answer& answer) {
    controller_.answerNext(answer);
    HeadendConfig config = randomHeadendConfig(7);
    try {
      fetch(config);
      ADD_FAILURE() << "the reply was taken";
    } catch (const TTransportException& error) {
      EXPECT_NE(error.getType(), TTransportException::TIMED_OUT) << error.what();
    } catch (const TException&) {
      // as it should be
    }
    EXPECT_EQ(config, randomHeadendConfig(7));
  }

  /// Expects that a fetch answered so replaces the record by the controller's.
  void expectTaken(const Answer& answer) {
    controller_.setConfig(randomHeadendConfig(1));
    controller_.answerNext(answer);
    HeadendConfig config;
    fetch(config);
    EXPECT_EQ(config, randomHeadendConfig(1));
  }

  Client connect() const {
    return Client("127.0.0.1", controller_.port(), false, kLongMs, kLongMs, kLongMs);
  }

  FakeController controller_{0};
};

// ---- replies that answer something else

/// A reply that answers something else, or is none.
struct Wrong {
  const char* name;
  Answer answer;
};

void PrintTo(const Wrong& wrong, std::ostream* out) {
  *out << wrong.name;
}

Answer answerOf(const std::string& bytes, bool hangsUp = false) {
  return {.kind = Answer::kBytes, .bytes = bytes, .hangsUp = hangsUp};
}

/// A frame with a result of these fields.
Answer result(const std::string& fields) {
  return answerOf(framed(binaryMessage("getHeadendConfig", apache::thrift::protocol::T_REPLY, 0,
                                       fields + kFieldStop)));
}

/// A frame with a message that begins with these bytes.
Answer message(const char (&begin)[9]) {
  return answerOf(framed(std::string(begin, 8) + "getHeadendConfig" + std::string(5, '\0')));
}

class WrongReplies : public HostileReplies, public testing::WithParamInterface<Wrong> {};

TEST_P(WrongReplies, AreRefused) {
  expectRefused(GetParam().answer);
}

INSTANTIATE_TEST_SUITE_P(
    Replies, WrongReplies,
    testing::Values(Wrong{"AnotherCallsName", {.name = "getHeadendStatus"}},
                    Wrong{"ANameThatGoesOn", {.name = "getHeadendConfigX"}},
                    Wrong{"ANameThatIsCut", {.name = "getHeadendConfi"}},
                    Wrong{"ACall", {.type = apache::thrift::protocol::T_CALL}},
                    Wrong{"AOnewayCall", {.type = apache::thrift::protocol::T_ONEWAY}},
                    Wrong{"AnUnknownMessageType", message("\x80\x01\0\x4d\0\0\0\x10")},
                    Wrong{"ANameLongerThanTheFrame", message("\x80\x01\0\x02\x7f\xff\xff\xff")},
                    Wrong{"ANameOfNegativeLength", message("\x80\x01\0\x02\xff\xff\xff\xff")},
                    Wrong{"AnOldNameLongerThanTheFrame", message("\x7f\xff\xff\xffgetH")},
                    Wrong{"NoResult", result("")},
                    Wrong{"AResultOfAnotherType", result(std::string("\x08\0\0\0\0\0\x05", 7))},
                    Wrong{"AnEmptyFrame", answerOf(framed(""))},
                    Wrong{"AFrameOfTheLeastLength", answerOf(std::string("\x80\0\0\0", 4))},
                    Wrong{"AFrameOfNegativeLength", answerOf("\xff\xff\xff\xff")},
                    Wrong{"GarbageInAFrame",
                          answerOf(framed("garbage in a frame of the right length"))},
                    Wrong{"Zeros", answerOf(framed(std::string(1000, '\0')))},
                    Wrong{"Ones", answerOf(framed(std::string(1000, '\xff')))},
                    Wrong{"AnotherProtocol", answerOf("HTTP/1.1 400 Bad Request\r\n\r\n", true)}),
    [](const auto& instance) { return instance.param.name; });

TEST_F(HostileReplies, UnknownFieldAndElementTypesAreRefused) {
  // 0x63 is no type: of a field, of the elements of a list, a set and a map, of the keys of a map.
  for (const std::string& header :
       {std::string("\x63", 1), std::string("\x0f\0\x63\x63\0\0\0\1", 8),
        std::string("\x0e\0\x63\x63\0\0\0\1", 8), std::string("\x0d\0\x63\x08\x63\0\0\0\1", 9),
        std::string("\x0d\0\x63\x63\x08\0\0\0\1", 9)}) {
    const std::string record = header + std::string(20, '\0');
    controller_.answerNext(recordAnswer("getHeadendConfig", record));
    HeadendConfig config;
    EXPECT_THROW(fetch(config), TException);
  }
}

// ---- more or less than one message in one frame

TEST_F(HostileReplies, AnotherSequenceNumberIsTaken) {
  expectTaken({.sequenceOffset = 1});
}

TEST_F(HostileReplies, BytesAfterTheReplyAreTaken) {
  expectTaken({.after = "x"});
  expectTaken({.after = framed("another")});
}

TEST_F(HostileReplies, BytesAfterTheReplyInItsFrameAreTaken) {
  const std::string reply = recordReply("getHeadendConfig", toBinary(randomHeadendConfig(1)));
  expectTaken(answerOf(framed(reply.substr(4) + "x")));
}

TEST_F(HostileReplies, ReplySpreadOverTwoFramesIsRefused) {
  const std::string reply = recordReply("getHeadendConfig", toBinary(HeadendConfig())).substr(4);
  for (const std::size_t cut :
       {std::size_t{3}, std::size_t{10}, std::size_t{27}, reply.size() - 1}) {
    controller_.answerNext(answerOf(framed(reply.substr(0, cut)) + framed(reply.substr(cut))));
    HeadendConfig config;
    EXPECT_THROW(fetch(config), TTransportException);
  }
}

// ---- every right answer to every call, cut short

/// The calls that the console makes.
const std::map<std::string, void (*)(Client&)> kCalls = {
    {"getHeadendConfig",
     [](Client& client) {
       HeadendConfig config;
       client.getHeadendConfig(config);
     }},
    {"getHeadendStatus",
     [](Client& client) {
       HeadendStatus status;
       client.getHeadendStatus(status);
     }},
    {"setHeadendConfig",
     [](Client& client) {
       HeadendStatus status;
       client.setHeadendConfig(status, HeadendConfig());
     }},
    {"setTDTRFInputConfig",
     [](Client& client) { client.setTDTRFInputConfig(TDTRFInputConfig(), TDTRFInputConfig()); }},
    {"setSATRFInputConfig", [](Client& client) {
       client.setSATRFInputConfig(korvel::thrift::general::RFInputId::SAT1, SATRFInputConfig());
     }}};

/// An answer to a call.
struct Reply {
  std::string method;
  std::string name;
  TMessageType type = apache::thrift::protocol::T_REPLY;
  std::string body{};
  std::string outcome{};  ///< what comes of it, as HostileMessages::outcomeOf() says it

  std::string message() const { return binaryMessage(method, type, 0, body); }
};

/// The exception that each call declares, in the place that it has in every call's result.
WebSrv_getHeadendConfig_result notReady() {
  WebSrv_getHeadendConfig_result result;
  result.notReady.reason = "starting";
  result.__isset.notReady = true;
  return result;
}

Reply notReadyReply(const std::string& method, const std::string& body = toBinary(notReady())) {
  return {.method = method, .name = "NotReady", .body = body, .outcome = "not ready"};
}

/// The library's own exception.
TApplicationException broken() {
  return {TApplicationException::INTERNAL_ERROR, "broken"};
}

Reply brokenReply(const std::string& method, const std::string& body = toBinary(broken())) {
  return {.method = method,
          .name = "ApplicationException",
          .type = apache::thrift::protocol::T_EXCEPTION,
          .body = body,
          .outcome = "application exception"};
}

std::vector<Reply> rightReplies() {
  const std::string end(1, kFieldStop);
  const std::string config = recordResult(toBinary(randomHeadendConfig(1)));
  const std::string status = recordResult(toBinary(randomHeadendStatus(1)));
  const std::map<std::string, std::string> results = {{"getHeadendConfig", config},
                                                      {"getHeadendStatus", status},
                                                      {"setHeadendConfig", status},
                                                      {"setTDTRFInputConfig", end},
                                                      {"setSATRFInputConfig", end}};
  std::vector<Reply> replies;
  for (const auto& [method, result] : results) {
    replies.push_back({.method = method, .name = "Result", .body = result, .outcome = "taken"});
    replies.push_back(notReadyReply(method));
    replies.push_back(brokenReply(method));
  }
  return replies;
}

class HostileMessages : public HostileReplies {
 protected:
  /// What comes of a call that is answered with `bytes`, and nothing after them.
  std::string outcomeOf(const std::string& method, const std::string& bytes) {
    controller_.answerNext(answerOf(bytes, true));
    Client client = connect();
    try {
      kCalls.at(method)(client);
      return "taken";
    } catch (const ControllerTaskIsNotReady& exception) {
      return exception.reason == "starting" ? "not ready" : "another reason";
    } catch (const TApplicationException& exception) {
      return exception.what() == std::string("broken") ? "application exception" : "another text";
    } catch (const TTransportException&) {
      return "refused";
    } catch (const apache::thrift::protocol::TProtocolException&) {
      return "refused";
    }
  }
};

class RightReplies : public HostileMessages, public testing::WithParamInterface<Reply> {};

TEST_P(RightReplies, AreRefusedWhenCutAtAnyByte) {
  const Reply& reply = GetParam();
  const std::string whole = framed(reply.message());
  for (std::size_t bytes = 0; bytes < whole.size(); ++bytes) {
    ASSERT_EQ(outcomeOf(reply.method, whole.substr(0, bytes)), "refused")
        << bytes << " of " << whole.size() << " bytes";
  }
  EXPECT_EQ(outcomeOf(reply.method, whole), reply.outcome);
}

TEST_P(RightReplies, AreRefusedWhenCutAtAnyByteInsideAWholeFrame) {
  const Reply& reply = GetParam();
  const std::string whole = reply.message();
  for (std::size_t bytes = 0; bytes < whole.size(); ++bytes) {
    ASSERT_EQ(outcomeOf(reply.method, framed(whole.substr(0, bytes))), "refused")
        << bytes << " of " << whole.size() << " bytes";
  }
}

INSTANTIATE_TEST_SUITE_P(Calls, RightReplies, testing::ValuesIn(rightReplies()),
                         [](const auto& instance) {
                           return instance.param.method + instance.param.name;
                         });

void PrintTo(const Reply& reply, std::ostream* out) {
  *out << reply.method << " " << reply.name;
}

// ---- claims

/// A binary protocol that remembers where it wrote the sizes of strings and containers.
class SizeRecorder : public TBinaryProtocol {
 public:
  explicit SizeRecorder(const std::shared_ptr<apache::thrift::transport::TMemoryBuffer>& buffer)
      : TBinaryProtocol(buffer), buffer_(*buffer) {}

  uint32_t writeMapBegin_virt(const TType key, const TType value, const uint32_t size) override {
    return written(TBinaryProtocol::writeMapBegin(key, value, size));
  }
  uint32_t writeListBegin_virt(const TType type, const uint32_t size) override {
    return written(TBinaryProtocol::writeListBegin(type, size));
  }
  uint32_t writeSetBegin_virt(const TType type, const uint32_t size) override {
    return written(TBinaryProtocol::writeSetBegin(type, size));
  }
  uint32_t writeString_virt(const std::string& text) override {
    positions.push_back(buffer_.available_read());
    return TBinaryProtocol::writeString(text);
  }

  std::vector<std::size_t> positions{};

 private:
  uint32_t written(uint32_t bytes) {
    positions.push_back(buffer_.available_read() - sizeof(uint32_t));
    return bytes;
  }

  apache::thrift::transport::TMemoryBuffer& buffer_;
};

/// The encodings of `record`, one for each size in it, with `claim` in its place.
template <class Record>
std::vector<std::string> lies(const Record& record, const std::string& claim) {
  const auto buffer = std::make_shared<apache::thrift::transport::TMemoryBuffer>();
  SizeRecorder protocol(buffer);
  record.write(&protocol);
  std::vector<std::string> encodings;
  for (const std::size_t position : protocol.positions) {
    encodings.push_back(buffer->getBufferAsString().replace(position, claim.size(), claim));
  }
  return encodings;
}

class HostileClaims : public HostileMessages {
 protected:
  /// Answers with `record` once for each size in it, with the claim in its place.
  template <class Record>
  void expectEveryClaimRefused(const std::string& method, const Record& record,
                               const std::string& claim) {
    const std::vector<std::string> encodings = lies(record, claim);
    ASSERT_GT(encodings.size(), 100U);
    for (const std::string& lying : encodings) {
      controller_.answerNext(recordAnswer(method, lying));
      Record target;
      ASSERT_THROW(fetch(target), TException) << "size " << &lying - encodings.data();
    }
  }
};

const std::string kFiftyMillion("\x02\xfa\xf0\x80", 4);
const std::string kLargest("\x7f\xff\xff\xff", 4);
const std::string kNegative("\x80\0\0\0", 4);

TEST_F(HostileClaims, InARecordAreRefusedAtEveryDepthWithoutTheMemory) {
  EXPECT_LT(peakMemory([this] {
              for (const std::string& claim : {kFiftyMillion, kLargest, kNegative}) {
                expectEveryClaimRefused("getHeadendConfig", randomHeadendConfig(1), claim);
                expectEveryClaimRefused("getHeadendStatus", randomHeadendStatus(1), claim);
              }
            }),
            kMemoryForAMegabyte / 4);
}

TEST_F(HostileClaims, InTheTextOfAnExceptionAreRefusedWithoutTheMemory) {
  EXPECT_LT(
      peakMemory([this] {
        for (const std::string& claim : {kFiftyMillion, kLargest, kNegative}) {
          const std::vector<std::string> texts[] = {lies(notReady(), claim), lies(broken(), claim)};
          ASSERT_EQ(texts[0].size(), 1U);
          ASSERT_EQ(texts[1].size(), 1U);
          for (const auto& [method, call] : kCalls) {
            for (const Reply& reply :
                 {notReadyReply(method, texts[0][0]), brokenReply(method, texts[1][0])}) {
              EXPECT_EQ(outcomeOf(method, framed(reply.message())), "refused")
                  << method << " " << reply.name;
            }
          }
        }
      }),
      kMegabyte);
}

TEST_F(HostileClaims, InAnUnknownFieldAreRefused) {
  // Field 99 of the record: list, set and map, of records and of one-byte values, and a string.
  const std::vector<std::string> unknownFields = {
      std::string("\x0f\0\x63\x0c", 4) + kLargest, std::string("\x0f\0\x63\x03", 4) + kLargest,
      std::string("\x0e\0\x63\x0c", 4) + kLargest, std::string("\x0d\0\x63\x03\x0c", 5) + kLargest,
      std::string("\x0b\0\x63", 3) + kLargest};
  for (const std::string& field : unknownFields) {
    controller_.answerNext(recordAnswer("getHeadendConfig", field + std::string(100, '\0')));
    HeadendConfig config;
    EXPECT_THROW(fetch(config), TException);
  }
}

TEST_F(HostileClaims, OfOneElementMoreThanThereAreBytesLeftIsRefused) {
  // HeadendConfig { 1: LineupConfig { 5: list of 6 RFEntry, each an empty record } }: 6 bytes for
  // the entries, 2 to end the records and 1 to end the result are left after the list's header.
  const auto reply = [](char count) {
    return recordAnswer("getHeadendConfig", std::string("\x0c\0\x01\x0f\0\x05\x0c\0\0\0", 10) +
                                                count + std::string(8, '\0'));
  };
  HeadendConfig config;
  controller_.answerNext(reply(6));
  fetch(config);
  EXPECT_EQ(config.lineupConfig.rfEntries.size(), 6U);

  controller_.answerNext(reply(10));
  HeadendConfig refused;
  EXPECT_THROW(fetch(refused), apache::thrift::protocol::TProtocolException);
  EXPECT_TRUE(refused.lineupConfig.rfEntries.empty());
}

TEST_F(HostileClaims, OfAFrameOfTwoGigabytesTakeNoMemoryBeforeTheBytesArrive) {
  EXPECT_LT(peakMemory([this] {
              expectRefused(answerOf(kLargest + "short", true));
              expectRefused(answerOf(kLargest + std::string(kMegabyte, 'x'), true));
            }),
            kMemoryForAMegabyte / 4);
}

// ---- no limit on honest records

TEST_F(HostileReplies, AHundredThousandOfTheShortestRecordsThatAPeerWritesAreTaken) {
  HeadendStatus status;
  status.baseStatus.fans.resize(100000);
  for (int32_t key = 1; key <= 100000; ++key) {
    status.lineupStatus.carrierBitrates[key] = key;
  }
  controller_.setStatus(status);
  HeadendStatus fetched;
  fetch(fetched);
  EXPECT_TRUE(fetched == status);
}

// A writer that omits unset fields, as Python's does, writes such a record as empty.
TEST_F(HostileReplies, AHundredThousandRecordsWithoutAFieldAreTaken) {
  std::string record("\x0c\0\x01\x0d\0\x09\x08\x0c\0\x01\x86\xa0", 12);  // .emptyInputServices
  for (int32_t key = 1; key <= 100000; ++key) {
    record += {static_cast<char>(key >> 24), static_cast<char>(key >> 16),
               static_cast<char>(key >> 8), static_cast<char>(key), '\0'};
  }
  controller_.answerNext(recordAnswer("getHeadendConfig", record + std::string(2, '\0')));
  HeadendConfig fetched;
  fetch(fetched);
  EXPECT_EQ(fetched.lineupConfig.emptyInputServices.size(), 100000U);
}

TEST_F(HostileReplies, TextOfTwentyMegabytesIsTaken) {
  HeadendConfig config;
  config.headendGlobalConfig.headendName.resize(20000000, 'x');
  controller_.setConfig(config);
  HeadendConfig fetched;
  fetch(fetched);
  EXPECT_TRUE(fetched == config);
}

TEST_F(HostileReplies, UnknownFieldNestedFiftyDeepIsSkipped) {
  std::string record;
  for (int depth = 0; depth < 50; ++depth) {
    record += std::string("\x0c\0\x63", 3);
  }
  controller_.answerNext(recordAnswer("getHeadendConfig", record + std::string(51, '\0')));
  HeadendConfig fetched;
  EXPECT_NO_THROW(fetch(fetched));
}

}  // namespace
}  // namespace lineup::test
