#include "printer_app/sealed_password.h"

#include <map>
#include <mutex>
#include <vector>

#include "platform/crypto.h"
#include "secure/base64.h"
#include "secure/sec_blob.h"

namespace {

constexpr uint32_t kBlobRoom = 2000;

// The filter's random generator and key objects are process-wide; client
// threads seal one at a time.
std::mutex sealMutex;

std::mutex depositMutex;
std::map<std::string, std::string>& Deposits() {
  static std::map<std::string, std::string> deposits;
  return deposits;
}

}  // namespace

std::string SealJobPassword(const uint8_t* password, size_t length) {
  if (password == nullptr || length == 0 || length > kMaxJobPasswordLength) return "";
  std::vector<uint8_t> plain(password, password + length);
  std::vector<uint8_t> blob(kBlobRoom);
  uint32_t blobLength = kBlobRoom;
  uint32_t result;
  {
    std::lock_guard<std::mutex> lock(sealMutex);
    result = Encode_Random(plain.data(), static_cast<uint32_t>(plain.size()), blob.data(),
                           &blobLength);
  }
  CryptoCleanse(plain.data(), plain.size());
  if (result != kSecBlobSuccess) return "";
  std::string field(4 * (blobLength / 3 + 1), '\0');
  int32_t fieldLength = 0;
  const bool encoded = XSPBinToB64(blob.data(), static_cast<int32_t>(blobLength), field.data(),
                                   &fieldLength, static_cast<int32_t>(field.size())) == kXSPSuccess;
  CryptoCleanse(blob.data(), blob.size());
  if (!encoded) return "";
  field.resize(static_cast<size_t>(fieldLength));
  return field;
}

std::string JobKey(int printerId, int jobId) {
  return std::to_string(printerId) + "/" + std::to_string(jobId);
}

void DepositSealedPassword(const std::string& key, const std::string& sealed) {
  std::lock_guard<std::mutex> lock(depositMutex);
  Deposits()[key] = sealed;
}

std::string WithdrawSealedPassword(const std::string& key) {
  std::lock_guard<std::mutex> lock(depositMutex);
  auto found = Deposits().find(key);
  if (found == Deposits().end()) return "";
  std::string sealed = std::move(found->second);
  Deposits().erase(found);
  return sealed;
}
