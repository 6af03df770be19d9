#include "controller/config_file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <future>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "controller/config_file_transport.h"
#include "controller/thrift_log.h"
#include "tests/support/encoding.h"
#include "tests/support/expect_for_owner_alone.h"
#include "tests/support/file_content.h"
#include "tests/support/memory_use.h"
#include "tests/support/random_records.h"
#include "tests/support/streams.h"
#include "tests/support/temporary_folder.h"

namespace {

/// What the code under test asks of the kernel, as the stand-ins below see it.
struct Syncing {
  std::vector<std::string> calls{};  ///< "syncfs" or "sync", and the size of the watched file
  std::string watched{};
  bool watchedWasOpen = false;  ///< while sync() ran
  int syncfsResult = 0;
};

Syncing syncing;

std::string fileOf(int descriptor) {
  std::error_code none;
  return std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(descriptor), none);
}

std::string sizeOfWatched() {
  std::error_code none;
  return " " + std::to_string(std::filesystem::file_size(syncing.watched, none));
}

}  // namespace

// These take the place of the C library's.

int syncfs(int descriptor) noexcept {
  const bool watched = fileOf(descriptor) == syncing.watched;
  syncing.calls.push_back(watched ? "syncfs" + sizeOfWatched() : "syncfs of another file");
  return syncing.syncfsResult;
}

void sync() noexcept {
  syncing.calls.push_back("sync" + sizeOfWatched());
  for (const auto& descriptor : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code none;
    syncing.watchedWasOpen |=
        std::filesystem::read_symlink(descriptor.path(), none) == syncing.watched;
  }
}

namespace lineup::test {
namespace {

using hub_module::HeadendConfig;

class ConfigFile : public testing::Test {
 protected:
  ConfigFile() {
    routeThriftOutputToLog();
    descriptors_ = openDescriptors();
  }
  ~ConfigFile() override { EXPECT_EQ(openDescriptors(), descriptors_); }

  void fill(const std::string& content) const { writeFile(path_, content); }

  /// Expects that a file with this content is read over `config`, and leaves `after`.
  void expectRead(const std::string& content, const HeadendConfig& after,
                  HeadendConfig config = {}) const {
    fill(content);
    EXPECT_EQ(readConfigFile(path_, config), CONFIG_FILE_OK) << content;
    EXPECT_EQ(config, after) << content;
  }

  /// Expects that a file with this content is read without a change.
  void expectPassedOver(const std::string& content) const { expectRead(content, some_, some_); }

  /// Expects that a file with this content is not read and changes nothing.
  void expectNotRead(const std::string& content) const {
    fill(content);
    HeadendConfig config = some_;
    EXPECT_EQ(readConfigFile(path_, config), CONFIG_FILE_FAILED) << content;
    EXPECT_EQ(config, some_) << content;
  }

  /// Expects that a file holds the configuration.
  void expectHeld(const HeadendConfig& config) const {
    ASSERT_EQ(writeConfigFile(path_, config), CONFIG_FILE_OK);
    HeadendConfig read;
    EXPECT_EQ(readConfigFile(path_, read), CONFIG_FILE_OK);
    EXPECT_TRUE(read == config);
  }

  std::string content() const { return contentOf(path_); }

  mode_t mode() const {
    struct stat status {};
    stat(path_.c_str(), &status);
    return status.st_mode & 07777;
  }

  const TemporaryFolder folder_;
  const std::string path_ = folder_.file("config.json");
  const HeadendConfig some_ = randomHeadendConfig(1);
  std::size_t descriptors_ = 0;
};

// ---- writing

TEST(ConfigFileResults, AreTheNumbersThatCallersKnow) {
  EXPECT_EQ(CONFIG_FILE_OK, 0);
  EXPECT_EQ(CONFIG_FILE_NOT_OPENED, -1);
  EXPECT_EQ(CONFIG_FILE_FAILED, -2);
}

TEST_F(ConfigFile, HoldsTheJsonOfTheRecordAndNothingElse) {
  EXPECT_EQ(writeConfigFile(path_, some_), CONFIG_FILE_OK);
  EXPECT_EQ(content(), toJson(some_));
}

TEST_F(ConfigFile, IsCreatedForItsOwnerAlone) {
  const mode_t old = umask(0);
  EXPECT_EQ(writeConfigFile(path_, HeadendConfig()), CONFIG_FILE_OK);
  umask(old);
  expectForOwnerAlone(path_);
}

TEST_F(ConfigFile, ThatExistsIsTruncatedAndKeepsItsPermissions) {
  fill(std::string(100000, 'x'));
  chmod(path_.c_str(), 0644);
  EXPECT_EQ(writeConfigFile(path_, HeadendConfig()), CONFIG_FILE_OK);
  EXPECT_EQ(content(), toJson(HeadendConfig()));
  EXPECT_EQ(mode(), mode_t{0644});
}

TEST_F(ConfigFile, IsSyncedBeforeItsLastBytesAreWrittenAndOnceMoreWhenItIsClosed) {
  syncing = {.watched = path_};
  EXPECT_EQ(writeConfigFile(path_, some_), CONFIG_FILE_OK);
  const std::size_t size = toJson(some_).size();
  ASSERT_EQ(syncing.calls.size(), 2U);
  EXPECT_EQ(syncing.calls[0].substr(0, 7), "syncfs ");
  EXPECT_LT(std::stoul(syncing.calls[0].substr(7)), size);
  EXPECT_EQ(syncing.calls[1], "sync " + std::to_string(size));
  EXPECT_FALSE(syncing.watchedWasOpen);
}

TEST_F(ConfigFile, IsWrittenToItsEndEvenIfTheFirstSyncFails) {
  syncing = {.watched = path_, .syncfsResult = -1};
  EXPECT_EQ(writeConfigFile(path_, some_), CONFIG_FILE_FAILED);
  EXPECT_EQ(content(), toJson(some_));
  EXPECT_EQ(syncing.calls.size(), 2U);
}

TEST_F(ConfigFile, ThatCannotBeOpenedForWritingIsMinusOne) {
  syncing = {};
  EXPECT_EQ(writeConfigFile(folder_.file("missing/config.json"), HeadendConfig()),
            CONFIG_FILE_NOT_OPENED);
  EXPECT_EQ(writeConfigFile(folder_.path(), HeadendConfig()), CONFIG_FILE_NOT_OPENED);
  EXPECT_EQ(writeConfigFile("", HeadendConfig()), CONFIG_FILE_NOT_OPENED);
  EXPECT_EQ(writeConfigFile(std::string(10000, 'x'), HeadendConfig()), CONFIG_FILE_NOT_OPENED);
  EXPECT_EQ(syncing.calls, std::vector<std::string>());
  EXPECT_TRUE(std::filesystem::is_empty(folder_.path()));
}

TEST_F(ConfigFile, OnAFullDiskIsMinusTwo) {
  EXPECT_EQ(
      printed([] { EXPECT_EQ(writeConfigFile("/dev/full", HeadendConfig()), CONFIG_FILE_FAILED); }),
      "");
}

TEST_F(ConfigFile, WhoseLastBytesFindNoRoomIsMinusTwo) {
  const std::size_t size = toJson(HeadendConfig()).size();
  const rlim_t wholeBuffers = size - size % 512;
  ASSERT_NE(size, wholeBuffers);
  struct rlimit limit {};
  getrlimit(RLIMIT_FSIZE, &limit);
  signal(SIGXFSZ, SIG_IGN);
  const struct rlimit lower { wholeBuffers, limit.rlim_max };
  setrlimit(RLIMIT_FSIZE, &lower);
  syncing = {.watched = path_};
  const int result = writeConfigFile(path_, HeadendConfig());
  setrlimit(RLIMIT_FSIZE, &limit);
  EXPECT_EQ(result, CONFIG_FILE_FAILED);
  EXPECT_EQ(syncing.calls, std::vector<std::string>{"syncfs " + std::to_string(wholeBuffers)});
  EXPECT_EQ(std::filesystem::file_size(path_), wholeBuffers);
}

// ---- reading

TEST_F(ConfigFile, IsReadBackEqual) {
  for (uint32_t seed = 0; seed < 20; ++seed) {
    expectHeld(randomHeadendConfig(seed));
  }
}

TEST_F(ConfigFile, OfFortyMegabytesIsReadBackEqual) {
  HeadendConfig config = some_;
  for (int32_t key = 1; key <= 10000; ++key) {
    config.lineupConfig.dvbInputServices[key].service.name = std::string(4096, 'n');
    config.lineupConfig.rfEntries.emplace_back().serviceKey = key;
  }
  expectHeld(config);
  EXPECT_GT(std::filesystem::file_size(path_), 40'000'000U);
}

TEST_F(ConfigFile, ThatLacksFieldsLeavesTheirValues) {
  HeadendConfig expected = some_;
  expected.headendGlobalConfig.headendId = 7;
  expected.headendGlobalConfig.__set_countryCode(general::CountryCode::ITALY);
  expected.ipInputs.clear();
  expectRead(R"({"2":{"rec":{"1":{"i32":7},"4":{"i32":5}}},"5":{"map":["str","rec",0,{}]}})",
             expected, some_);
}

TEST_F(ConfigFile, OfAnEmptyRecordChangesNothing) {
  expectPassedOver("{}");
}

TEST_F(ConfigFile, WithUnknownFieldsIsReadWithoutThem) {
  std::string text = toJson(some_);
  text.insert(1, R"("77":{"rec":{"1":{"lst":["rec",2,{"1":{"str":"a"}},{}]},"2":{"dbl":1.5},)"
                 R"("3":{"map":["i32","lst",1,{"5":["tf",1,1]}]},"4":{"set":["i64",1,9]}}},)"
                 R"("78":{"tf":1},)");
  expectRead(text, some_);
}

TEST_F(ConfigFile, WithAFieldOfAnotherTypeIsReadWithoutIt) {
  expectPassedOver(
      R"({"2":{"str":"no record"},"1":{"rec":{"5":{"map":["i32","i32",1,{"1":2}]}}}})");
}

TEST_F(ConfigFile, FollowedByALineEndIsRead) {
  expectRead(toJson(some_) + "\n", some_);
}

TEST_F(ConfigFile, HoldsNulsInTexts) {
  using std::string_literals::operator""s;
  HeadendConfig config;
  for (const std::string& text :
       {"\0"s, "a\0b"s, "\0\0u0000"s, "\\u0000"s, "\\\0"s, "\\\\u0000\0\""s, "\\u000"s}) {
    config.headendGlobalConfig.headendName = text;
    config.ipInputs[text].muxes[text];
    expectHeld(config);
  }
}

TEST_F(ConfigFile, MayEscapeTheSlash) {
  HeadendConfig expected;
  expected.headendGlobalConfig.headendName = "/a\\//\n/";
  expectRead(R"({"2":{"rec":{"5":{"str":"\/a\\/\/\n\/"}}}})", expected);
}

/// `json` with `space` around each of its values.
std::string spaced(const std::string& json, const std::string& space) {
  std::string text;
  bool inText = false;
  bool escaped = false;
  for (const char character : json) {
    inText = inText != (character == '"' && !escaped);
    escaped = character == '\\' && !escaped;
    const bool isSign = std::string_view("{}[]:,").find(character) != std::string_view::npos;
    const std::string_view around =
        isSign && !inText ? std::string_view(space) : std::string_view();
    text.append(around).append(1, character).append(around);
  }
  return text;
}

TEST_F(ConfigFile, MayHaveWhiteSpaceBetweenValues) {
  HeadendConfig written = some_;
  written.headendGlobalConfig.headendName = " { a ,\t\"b\" : 1 }\n";
  for (const char* space : {" ", "\n\t", "\r\n    "}) {
    expectRead(spaced(toJson(written), space), written);
  }
}

TEST_F(ConfigFile, WithWhiteSpaceWithinANumberIsMinusTwoAndKeepsTheValue) {
  for (const char* number : {"1 2", "- 1", "1\n2", "1 \t\r\n -2"}) {
    expectNotRead(R"({"2":{"rec":{"1":{"i32":)" + std::string(number) + "}}}}");
  }
}

TEST_F(ConfigFile, MayEscapeWithCapitalDigits) {
  using std::string_literals::operator""s;
  HeadendConfig expected;
  expected.headendGlobalConfig.headendName =
      "\xc3\x89\xc3\x89\xf0\x9f\x98\x80 \\u00C9ABC\0\x1f"
      "F"s;
  expectRead(R"({"2":{"rec":{"5":{"str":"\u00C9\u00c9\uD83D\uDE00 \\u00C9ABC\u0000\u001FF"}}}})",
             expected);
}

TEST_F(ConfigFile, MayHaveNumbersWithExponents) {
  HeadendConfig expected;
  expected.lineupConfig.globalConfig.drmConfig.vsecureConfig.keyPeriod = -1500;
  expectRead(R"({"1":{"rec":{"1":{"rec":{"2":{"rec":{"3":{"rec":{"2":{"dbl":-1.5E+3}}}}}}}}}})",
             expected);
}

/// A pipe in the place of a file, and its writer.
class PipedFile {
 public:
  /// With `staysOpen` the writer closes the pipe only when it has been read.
  PipedFile(const std::string& path, std::string content, bool staysOpen)
      : path_(path), content_(std::move(content)), staysOpen_(staysOpen) {
    mkfifo(path.c_str(), 0600);
    std::signal(SIGPIPE, SIG_IGN);  // not all of it has to be read
  }

  int read(HeadendConfig& config) {
    std::promise<void> isRead;
    std::thread writer([&] {
      const Descriptor pipe(open(path_.c_str(), O_WRONLY | O_CLOEXEC));
      std::string_view rest = content_;
      for (ssize_t count = 1; count > 0; rest.remove_prefix(static_cast<std::size_t>(count))) {
        count = std::max<ssize_t>(0, write(pipe.number(), rest.data(), rest.size()));
      }
      if (staysOpen_) {
        isRead.get_future().wait();
      }
    });
    const int result = readConfigFile(path_, config);
    isRead.set_value();
    writer.join();
    return result;
  }

 private:
  const std::string path_;
  const std::string content_;
  const bool staysOpen_;
};

TEST_F(ConfigFile, MayBeAPipeThatStaysOpen) {
  for (const std::string& text : {toJson(some_), std::string(R"({"77":{"str":"\n"}})")}) {
    HeadendConfig config = some_;
    EXPECT_EQ(PipedFile(path_, text, true).read(config), CONFIG_FILE_OK);
    EXPECT_EQ(config, some_);
  }
}

TEST_F(ConfigFile, ThatCannotBeOpenedIsMinusOneOrAFolderMinusTwoAndChangesNothing) {
  HeadendConfig config = some_;
  EXPECT_EQ(readConfigFile(path_, config), CONFIG_FILE_NOT_OPENED);
  EXPECT_EQ(readConfigFile("", config), CONFIG_FILE_NOT_OPENED);
  EXPECT_EQ(readConfigFile(folder_.path(), config), CONFIG_FILE_FAILED);
  EXPECT_EQ(config, some_);
}

TEST_F(ConfigFile, ThatIsEmptyOrNoConfigurationIsMinusTwoAndChangesNothing) {
  for (const char* text :
       {"", "x", "[]", "null", "\n", "hello world", "{\"2\"}", "{\"a\":{\"i32\":1}}",
        "{\"2\":{\"foo\":1}}", "{\"2\":{\"rec\":1}}", "\xff\xfe", "{{{{"}) {
    expectNotRead(text);
  }
}

TEST_F(ConfigFile, TruncatedAtAnyLengthIsMinusTwoAndKeepsWhatHadBeenRead) {
  const std::string whole = toJson(randomHeadendConfig(shortConfigSeed()));
  const HeadendConfig before = randomHeadendConfig(shortConfigSeed() + 1);
  fill(whole);
  for (std::size_t length = whole.size(); length-- > 0;) {
    std::filesystem::resize_file(path_, length);
    HeadendConfig config = before;
    ASSERT_EQ(readConfigFile(path_, config), CONFIG_FILE_FAILED) << "length " << length;
    if (length % 16 != 0) {
      continue;  // the comparison takes its time
    }
    HeadendConfig expected = before;
    ASSERT_THROW(decode<apache::thrift::protocol::TJSONProtocol>(whole.substr(0, length), expected),
                 apache::thrift::TException);
    ASSERT_TRUE(config == expected) << "length " << length;
  }
}

TEST_F(ConfigFile, WithANumberThatHasNoDigitsIsMinusTwoAndKeepsTheValue) {
  for (const char* text :
       {R"({"2":{"rec":{"1":{"i32":}}}})", R"({"2":{"rec":{"1":{"i32":-}}}})",
        R"({"1":{"rec":{"1":{"rec":{"1":{"tf":}}}}}})",
        R"({"1":{"rec":{"1":{"rec":{"2":{"rec":{"3":{"rec":{"2":{"dbl":}}}}}}}}}})",
        R"({"77":{"i64":}})", R"({"77":{"i16":e}})", R"({"77":{"i8":}})", R"({"77":{"dbl":.}})",
        R"({"77":{"lst":["rec",]}})", R"({"77":{"set":["rec",]}})",
        R"({"77":{"map":["i32","rec",,{}]}})", R"({"77":{"map":["i32","rec",1,{"":{}}]}})"}) {
    expectNotRead(text);
  }
}

TEST_F(ConfigFile, WithAnUnknownTextOrByteOfAnyKindIsReadWithoutIt) {
  HeadendConfig expected;
  expected.headendGlobalConfig.headendId = -3;
  for (const std::string value :
       {R"("str":"")", R"("str":"=")", R"("str":"==")", R"("str":"===")", R"("str":"a==")",
        R"("str":"✓")", R"("str":"no base64 at all!")", R"("i8":255)", R"("i8":256)", R"("i8":300)",
        R"("i8":-129)", R"("i8":32767)", R"("i8":999999999999)"}) {
    expectRead(R"({"77":{)" + value + R"(},"2":{"rec":{"1":{"i32":-3}}}})", expected);
  }
}

TEST_F(ConfigFile, HoldsEveryKindOfRealNumber) {
  HeadendConfig config;
  double& keyPeriod = config.lineupConfig.globalConfig.drmConfig.vsecureConfig.keyPeriod;
  for (const double value : {std::numeric_limits<double>::infinity(), -0.0, 1e300, 0.1}) {
    keyPeriod = value;
    expectHeld(config);
  }
  keyPeriod = std::numeric_limits<double>::quiet_NaN();
  ASSERT_EQ(writeConfigFile(path_, config), CONFIG_FILE_OK);
  HeadendConfig read;
  EXPECT_EQ(readConfigFile(path_, read), CONFIG_FILE_OK);
  EXPECT_TRUE(std::isnan(read.lineupConfig.globalConfig.drmConfig.vsecureConfig.keyPeriod));
}

TEST_F(ConfigFile, NestedTooDeepIsMinusTwo) {
  std::string text = R"({"77":)";
  for (int depth = 0; depth < 100000; ++depth) {
    text += R"({"rec":{"1":)";
  }
  fill(text);
  HeadendConfig config;
  EXPECT_EQ(readConfigFile(path_, config), CONFIG_FILE_FAILED);
}

// ---- claims

/// A JSON protocol that remembers where it wrote the sizes of containers.
class SizeRecorder : public apache::thrift::protocol::TJSONProtocol {
 public:
  using TType = apache::thrift::protocol::TType;
  struct Size {
    std::size_t position;
    std::size_t length;
  };

  explicit SizeRecorder(const std::shared_ptr<apache::thrift::transport::TMemoryBuffer>& buffer)
      : TJSONProtocol(buffer), buffer_(*buffer) {}

  uint32_t writeMapBegin_virt(const TType key, const TType value, const uint32_t size) override {
    const uint32_t written = TJSONProtocol::writeMapBegin(key, value, size);
    remember(size, 2);  // ",{" follows it
    return written;
  }
  uint32_t writeListBegin_virt(const TType type, const uint32_t size) override {
    const uint32_t written = TJSONProtocol::writeListBegin(type, size);
    remember(size, 0);
    return written;
  }

  std::vector<Size> sizes{};

 private:
  void remember(uint32_t size, std::size_t after) {
    const std::size_t length = std::to_string(size).size();
    sizes.push_back({buffer_.available_read() - after - length, length});
  }

  apache::thrift::transport::TMemoryBuffer& buffer_;
};

TEST_F(ConfigFile, ThatClaimsMoreElementsThanItHoldsIsMinusTwoWithoutTheMemory) {
  const auto buffer = std::make_shared<apache::thrift::transport::TMemoryBuffer>();
  SizeRecorder protocol(buffer);
  some_.write(&protocol);
  const std::string honest = buffer->getBufferAsString();
  ASSERT_GT(protocol.sizes.size(), 20U);
  const int64_t peak = peakMemory([&] {
    for (const char* claim : {"50000000", "2147483647", "4294967295", "99999999999", "-1"}) {
      for (const SizeRecorder::Size& size : protocol.sizes) {
        std::string lying = honest;
        lying.replace(size.position, size.length, claim);
        fill(lying);
        HeadendConfig config;
        ASSERT_EQ(readConfigFile(path_, config), CONFIG_FILE_FAILED)
            << claim << " at " << size.position;
      }
    }
  });
  EXPECT_LT(peak, kMemoryForAMegabyte / 4);
}

TEST_F(ConfigFile, ThatClaimsMoreElementsThanItHoldsGetsNoneOfThem) {
  const std::string entries = R"({"1":{"rec":{"5":{"lst":["rec",%,{},{}]}}}})";
  const std::size_t behindCount = entries.size() - entries.find('%') - 1;
  const auto entriesRead = [&](std::size_t claim) {
    std::string text = entries;
    fill(text.replace(text.find('%'), 1, std::to_string(claim)));
    HeadendConfig config;
    EXPECT_EQ(readConfigFile(path_, config), claim == 2 ? CONFIG_FILE_OK : CONFIG_FILE_FAILED)
        << claim;
    return config.lineupConfig.rfEntries.size();
  };
  EXPECT_EQ(entriesRead(2), 2U);
  EXPECT_EQ(entriesRead(behindCount - 1), 2U) << "the comma has been read with the count";
  EXPECT_EQ(entriesRead(behindCount), 0U);
  EXPECT_EQ(entriesRead(50000000), 0U);
}

TEST_F(ConfigFile, ThatClaimsMoreElementsInAnUnknownFieldIsMinusTwo) {
  for (const char* field :
       {R"("lst":["rec",2147483647,)", R"("set":["tf",2147483647,)",
        R"("map":["i32","rec",2147483647,{)", R"("lst":["lst",1,["str",2147483647,)"}) {
    fill(R"({"77":{)" + std::string(field));
    HeadendConfig config;
    EXPECT_EQ(readConfigFile(path_, config), CONFIG_FILE_FAILED) << field;
  }
}

/// `head`, then as many of the `elements` as a megabyte has room for, counted in `head` at "%".
std::string megabyte(std::string head, const std::function<std::string(std::size_t)>& element) {
  std::string elements;
  std::size_t count = 0;
  while (head.size() + elements.size() < 999900) {
    elements += (count == 0 ? "" : ",") + element(count);
    ++count;
  }
  head.replace(head.find('%'), 1, std::to_string(count));
  return head + elements;
}

TEST_F(ConfigFile, OfAMegabyteOfTextsOrNumbersNeverTakesMoreThanTheLimit) {
  const auto emptyString = [](std::size_t /*n*/) { return std::string("\"\""); };
  const auto zero = [](std::size_t /*n*/) { return std::string("0"); };
  for (const std::string& text :
       {megabyte(R"({"1":{"rec":{"1":{"rec":{"3":{"lst":["str",%,)", emptyString),
        megabyte(R"({"77":{"lst":["i32",%,)", zero),
        R"({"2":{"rec":{"3":{"str":")" + std::string(999900, 'x'),
        R"({"2":{"rec":{"1":{"i32":)" + std::string(999900, '1')}) {
    fill(text);
    const int64_t peak = peakMemory([this] {
      HeadendConfig config;
      EXPECT_EQ(readConfigFile(path_, config), CONFIG_FILE_FAILED);
    });
    EXPECT_LT(peak, kMemoryForAMegabyte) << text.substr(0, 60);
  }
}

TEST_F(ConfigFile, OfAMegabyteFromAPipeNeverTakesMoreThanTheLimit) {
  PipedFile pipe(path_, R"({"1":{"rec":{"5":{"lst":["rec",2147483647,)" + std::string(999900, ' '),
                 false);
  const int64_t peak = peakMemory([&] {
    HeadendConfig config;
    EXPECT_EQ(pipe.read(config), CONFIG_FILE_FAILED);
  });
  EXPECT_LT(peak, kMemoryForAMegabyte);
}

// ---- no limit on honest records

// A writer that omits unset fields, as Python's does, writes such a record as empty.
TEST_F(ConfigFile, HoldsAHundredThousandRecordsWithoutAField) {
  std::string text = R"({"1":{"rec":{"9":{"map":["i32","rec",100000,{)";
  for (int key = 1; key <= 100000; ++key) {
    text += (key == 1 ? "\"" : ",\"") + std::to_string(key) + "\":{}";
  }
  fill(text + "}]}}}}");
  HeadendConfig config;
  EXPECT_EQ(readConfigFile(path_, config), CONFIG_FILE_OK);
  EXPECT_EQ(config.lineupConfig.emptyInputServices.size(), 100000U);
}

TEST_F(ConfigFile, HoldsATextOfTwentyMegabytes) {
  HeadendConfig config;
  config.headendGlobalConfig.headendName.resize(20000000, 'x');
  expectHeld(config);
}

TEST_F(ConfigFile, WithAnUnknownFieldNestedFiftyDeepIsReadWithoutIt) {
  std::string text = "{}";
  for (int depth = 0; depth < 50; ++depth) {
    text.insert(0, R"({"77":{"rec":)") += "}}";
  }
  expectPassedOver(text);
}

}  // namespace
}  // namespace lineup::test
