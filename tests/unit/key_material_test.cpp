#include "secure/key_material.h"

#include <gtest/gtest.h>

#include <string>

#include "secure/sec_blob.h"

namespace {

// The embedded key text is the PEM body: six lines of 64 characters and one
// of 8, each ended by "\n". That the values are those of the key directory
// shows where they are used: blobs open with the test private key and carry
// its digests, stored passwords made from storage.seeds open.
TEST(KeyMaterial, KeyTextIsSevenLinesOfTheStatedLengths) {
  const std::string text = RSA_PUBKEY_2048_OFFICIAL;
  ASSERT_EQ(text.size(), 399u);
  for (size_t line = 0; line < 7; ++line) {
    const size_t at = line * 65;
    EXPECT_EQ(text.find('\n', at), at + (line < 6 ? 64 : 8)) << "line " << line;
  }
  EXPECT_EQ(SecBlobEnc_Decode_Key(RSA_PUBKEY_2048_OFFICIAL).size(), 294u);
}

}  // namespace
