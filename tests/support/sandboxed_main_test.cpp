// What a sandboxed main() gives each test, whatever else runs.

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <filesystem>

#include "tests/support/file_content.h"
#include "tests/support/sandbox.h"

namespace lineup::test {
namespace {

TEST(SandboxedMain, GivesATestThePortAndTheFolder) {
  const int listener = socket(AF_INET, SOCK_STREAM, 0);
  const int on = 1;
  setsockopt(listener, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(kControllerPort);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  EXPECT_EQ(bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  EXPECT_EQ(listen(listener, 1), 0);
  const int client = socket(AF_INET, SOCK_STREAM, 0);
  EXPECT_EQ(connect(client, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  close(client);
  close(listener);

  ASSERT_TRUE(std::filesystem::is_empty(kCatalogueFolder));
  writeFile(kCataloguePath, "data");
  EXPECT_EQ(std::filesystem::file_size(kCataloguePath), 4U);
  std::filesystem::remove(kCataloguePath);
}

}  // namespace
}  // namespace lineup::test
