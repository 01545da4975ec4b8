// job-password for secure print: sealed for the printer the moment it
// arrives, the plain bytes wiped, and only the sealed field kept until the
// job is printed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

// The longest password the print stream's field carries (the print dialog's
// limit too).
constexpr size_t kMaxJobPasswordLength = 239;

// Seals the password for the printers' public key and returns the field
// text the filter sends as it is (base64 of the key-transport blob); empty
// when sealing fails. Wipes its own copies of the plain bytes.
std::string SealJobPassword(const uint8_t* password, size_t length);

// The key under which a job's sealed field waits for it.
std::string JobKey(int printerId, int jobId);

// Keeps a sealed field until its job runs.
void DepositSealedPassword(const std::string& key, const std::string& sealed);

// Takes the sealed field back out (empty when there is none).
std::string WithdrawSealedPassword(const std::string& key);
