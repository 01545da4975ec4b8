// Test support for password fields in whole print streams, shared by the
// unit and the end-to-end tests. Both directions use the openssl tool, not
// the filter's own cryptography:
//
//   std::string ticket = "...PrintTypePasswordTicketKey=" + StoredPasswordText("1234");
//   ... run the job ...
//   EXPECT_EQ(WithOpenedFields(stream), "...HOLDENCRYPTKEY=\"<sealed:1234>\"\r\n...");
#pragma once

#include <cstdint>
#include <fstream>
#include <string>
#include <vector>

#include "sealed_blob.h"

namespace sealed_fields {

inline std::vector<uint8_t> FromHex(const std::string& hex) {
  std::vector<uint8_t> bytes;
  for (size_t i = 0; i + 1 < hex.size(); i += 2) {
    bytes.push_back(static_cast<uint8_t>(std::stoi(hex.substr(i, 2), nullptr, 16)));
  }
  return bytes;
}

inline std::string Base64(const std::vector<uint8_t>& bytes) {
  static const char kAlphabet[] =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (size_t i = 0; i < bytes.size(); i += 3) {
    uint32_t group = static_cast<uint32_t>(bytes[i]) << 16;
    if (i + 1 < bytes.size()) group |= static_cast<uint32_t>(bytes[i + 1]) << 8;
    if (i + 2 < bytes.size()) group |= bytes[i + 2];
    text += kAlphabet[(group >> 18) & 63];
    text += kAlphabet[(group >> 12) & 63];
    text += i + 1 < bytes.size() ? kAlphabet[(group >> 6) & 63] : '=';
    text += i + 2 < bytes.size() ? kAlphabet[group & 63] : '=';
  }
  return text;
}

}  // namespace sealed_fields

// The ticket text the print dialog stores for `password`: base64 of the
// AES-256-CBC ciphertext under the storage key material of the build's key
// directory (key HMAC-SHA256(seed1, seed2), IV seed3). Empty on failure.
inline std::string StoredPasswordText(const std::string& password) {
  using namespace sealed_fields;
  std::ifstream seeds(std::string(ZPJL_KEY_DIR) + "/storage.seeds");
  std::string seed1, seed2, seed3;
  if (!(seeds >> seed1 >> seed2 >> seed3)) return "";
  ScratchDir scratch;
  std::string diagnostics;
  if (!scratch.ok() || !WriteBytes(scratch.File("seed2"), FromHex(seed2)) ||
      !WriteText(scratch.File("plain"), password) ||
      !RunOpenssl({"dgst", "-sha256", "-mac", "HMAC", "-macopt", "hexkey:" + seed1, "-binary",
                   "-out", scratch.File("key"), scratch.File("seed2")},
                  &diagnostics) ||
      !RunOpenssl({"enc", "-aes-256-cbc", "-K", Hex(ReadBytes(scratch.File("key"))), "-iv", seed3,
                   "-in", scratch.File("plain"), "-out", scratch.File("cipher")},
                  &diagnostics)) {
    return "";
  }
  return Base64(ReadBytes(scratch.File("cipher")));
}

// `stream` with the value of every password attribute (HOLDENCRYPTKEY,
// BOXENCRYPTKEY, @JOEP, @ACEP) that is not empty replaced by "<sealed:"
// payload ">" when it opens with the test key, else by "<unopenable: "
// reason ">".
inline std::string WithOpenedFields(std::string stream) {
  for (const char* start : {"HOLDENCRYPTKEY=\"", "BOXENCRYPTKEY=\"", "@JOEP=", "@ACEP="}) {
    const std::string marker = start;
    for (size_t at = stream.find(marker); at != std::string::npos;
         at = stream.find(marker, at + 1)) {
      const size_t from = at + marker.size();
      const size_t to = stream.find('"', from);
      if (to == std::string::npos || to == from) continue;
      std::string error;
      std::optional<std::string> payload = OpenSealedField(stream.substr(from, to - from), &error);
      stream.replace(from, to - from,
                     payload ? "<sealed:" + *payload + ">" : "<unopenable: " + error + ">");
    }
  }
  return stream;
}
