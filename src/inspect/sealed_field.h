// A sealed password field of the header, taken apart without showing it:
// its base64 text, the key-transport blob inside, whether the blob names the
// built-in recipient key, and (given the recipient's private key) whether it
// opens and what kind of payload it holds.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

struct SealedFieldReport {
  size_t characters = 0;
  bool base64 = false;        // alphabet, "=" padding, a multiple of 4 characters
  size_t blobBytes = 0;       // decoded length
  bool blob = false;          // the bytes have the blob's layout
  std::string layoutProblem;  // why not, when base64 but not a blob
  uint32_t aesMode = 0;
  uint32_t keyType = 0;
  uint32_t cipherLength = 0;
  uint32_t totalLength = 0;
  uint32_t wrappedKeyLength = 0;
  bool reservedZero = true;    // bytes 12..15
  bool digestMatches = false;  // the blob's key digest is the built-in one for its key type

  // With a private key.
  bool openAttempted = false;
  bool opened = false;
  std::string openError;
  size_t payloadLength = 0;
  bool printable = false;  // no control bytes, valid text in the stream's encoding
  std::string payload;     // kept only when asked for
};

struct OpeningKey {
  std::string privateKeyPem;  // empty: do not open
  bool keepPayload = false;
};

// `text` is the field as it stands between the quotes. `utf8` says how the
// stream encodes text (for the printable test).
SealedFieldReport InspectSealedField(std::string_view text, const OpeningKey& key, bool utf8);

// "sealed, 492 characters, blob 368 bytes, key type 0, digest matches the
// built-in recipient key", or what the field is instead. Never the content.
std::string DescribeSealedField(const SealedFieldReport& report);

// "opens: payload 4 bytes, printable" or "does not open: <reason>"; empty
// when no opening was tried.
std::string DescribeOpening(const SealedFieldReport& report);
