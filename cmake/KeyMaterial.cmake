# Key material: reads the recipient public key, the two recipient key
# digests and the storage seeds from ZPJL_KEY_DIR, refuses a malformed
# directory with a message naming the file and the fault, and compiles them
# into zpjl_core.
#
# Included from the top CMakeLists.txt after zpjl_core exists. Run as a
# script it only checks a directory:
#   cmake -DZPJL_KEY_DIR=/path/to/keys -P cmake/KeyMaterial.cmake

if(CMAKE_SCRIPT_MODE_FILE)
  cmake_minimum_required(VERSION 3.16)
else()
  set(ZPJL_KEY_DIR "${CMAKE_SOURCE_DIR}/keys" CACHE PATH
      "Directory with the recipient public key, its digests and the storage seeds")
endif()
if(NOT ZPJL_KEY_DIR)
  message(FATAL_ERROR "Key material: ZPJL_KEY_DIR is not set")
endif()

function(_zpjl_key_fault file reason)
  message(FATAL_ERROR "Key material in ${ZPJL_KEY_DIR}: ${file}: ${reason}")
endfunction()

function(_zpjl_key_read file out_var)
  if(NOT EXISTS "${ZPJL_KEY_DIR}/${file}" OR IS_DIRECTORY "${ZPJL_KEY_DIR}/${file}")
    _zpjl_key_fault("${file}" "the file is missing")
  endif()
  file(READ "${ZPJL_KEY_DIR}/${file}" content)
  string(REPLACE "\r" "" content "${content}")
  set(${out_var} "${content}" PARENT_SCOPE)
endfunction()

# Hex digits of a given count into a C initialiser "0x12, 0x34, ...".
function(_zpjl_hex_bytes file what hex digits out_var)
  string(STRIP "${hex}" hex)
  string(TOLOWER "${hex}" hex)
  string(LENGTH "${hex}" length)
  if(NOT hex MATCHES "^[0-9a-f]*$" OR NOT length EQUAL digits)
    _zpjl_key_fault("${file}" "${what} must be exactly ${digits} hex digits")
  endif()
  string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1, " bytes "${hex}")
  string(REGEX REPLACE ", $" "" bytes "${bytes}")
  set(${out_var} "${bytes}" PARENT_SCOPE)
endfunction()

# recipient-2048.pem: a SubjectPublicKeyInfo PEM of an RSA-2048 key with
# exponent 65537, whose body is then always six lines of 64 characters and
# one of 8.
_zpjl_key_read(recipient-2048.pem _pem)
string(STRIP "${_pem}" _pem)
string(REPLACE "\n" ";" _pem_lines "${_pem}")
list(LENGTH _pem_lines _pem_count)
if(_pem_count LESS 2)
  _zpjl_key_fault(recipient-2048.pem "not a public key PEM (the file is empty or one line)")
endif()
list(GET _pem_lines 0 _pem_first)
list(GET _pem_lines -1 _pem_last)
if(NOT _pem_first STREQUAL "-----BEGIN PUBLIC KEY-----" OR
   NOT _pem_last STREQUAL "-----END PUBLIC KEY-----")
  _zpjl_key_fault(recipient-2048.pem
    "not a public key PEM (\"-----BEGIN PUBLIC KEY-----\" ... \"-----END PUBLIC KEY-----\"); "
    "convert an \"RSA PUBLIC KEY\" file with: openssl pkey -pubin -in old.pem -out recipient-2048.pem")
endif()
if(NOT _pem_count EQUAL 9)
  _zpjl_key_fault(recipient-2048.pem
    "the body must be 7 lines (six of 64 base64 characters and one of 8), found ${_pem_count} lines in all")
endif()
set(ZPJL_KEY_TEXT_LITERAL "")
set(_pem_body "")
foreach(_index RANGE 1 7)
  list(GET _pem_lines ${_index} _line)
  string(LENGTH "${_line}" _line_length)
  if(_index LESS 7)
    set(_want 64)
  else()
    set(_want 8)
  endif()
  if(NOT _line MATCHES "^[A-Za-z0-9+/=]*$" OR NOT _line_length EQUAL _want)
    _zpjl_key_fault(recipient-2048.pem
      "body line ${_index} must be ${_want} base64 characters (six lines of 64 and one of 8)")
  endif()
  string(APPEND _pem_body "${_line}")
  string(APPEND ZPJL_KEY_TEXT_LITERAL "    \"${_line}\\n\"\n")
endforeach()
string(REGEX REPLACE "\n$" "" ZPJL_KEY_TEXT_LITERAL "${ZPJL_KEY_TEXT_LITERAL}")
# The DER prefix of an RSA SubjectPublicKeyInfo with a 2048-bit modulus, and
# the exponent 65537 at its end.
if(NOT _pem_body MATCHES "^MIIBIjANBgkqhkiG9w0BAQEFAAOCAQ8AMIIBCgKCAQEA.*IDAQAB$")
  _zpjl_key_fault(recipient-2048.pem "not an RSA-2048 public key with exponent 65537")
endif()

_zpjl_key_read(recipient-2048.sha256 _digest)
_zpjl_hex_bytes(recipient-2048.sha256 "the digest" "${_digest}" 64 ZPJL_DIGEST_2048_BYTES)
_zpjl_key_read(recipient-3072.sha256 _digest)
_zpjl_hex_bytes(recipient-3072.sha256 "the digest" "${_digest}" 64 ZPJL_DIGEST_3072_BYTES)

# storage.seeds: seed1 (64 hex digits), seed2 (64), seed3 (32), one per line.
_zpjl_key_read(storage.seeds _seeds)
string(STRIP "${_seeds}" _seeds)
string(REGEX REPLACE "\n[ \t\n]*" ";" _seed_lines "${_seeds}")
list(LENGTH _seed_lines _seed_count)
if(NOT _seed_count EQUAL 3)
  _zpjl_key_fault(storage.seeds
    "three lines are needed (seed1: 64 hex digits, seed2: 64, seed3: 32), found ${_seed_count}")
endif()
list(GET _seed_lines 0 _seed)
_zpjl_hex_bytes(storage.seeds "line 1 (seed1)" "${_seed}" 64 ZPJL_SEED1_BYTES)
list(GET _seed_lines 1 _seed)
_zpjl_hex_bytes(storage.seeds "line 2 (seed2)" "${_seed}" 64 ZPJL_SEED2_BYTES)
list(GET _seed_lines 2 _seed)
_zpjl_hex_bytes(storage.seeds "line 3 (seed3)" "${_seed}" 32 ZPJL_SEED3_BYTES)

if(CMAKE_SCRIPT_MODE_FILE)
  message(STATUS "Key material in ${ZPJL_KEY_DIR} is well-formed")
  return()
endif()

set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS
  "${ZPJL_KEY_DIR}/recipient-2048.pem"
  "${ZPJL_KEY_DIR}/recipient-2048.sha256"
  "${ZPJL_KEY_DIR}/recipient-3072.sha256"
  "${ZPJL_KEY_DIR}/storage.seeds")
configure_file("${CMAKE_CURRENT_LIST_DIR}/key_material.cpp.in"
               "${CMAKE_BINARY_DIR}/generated/key_material.cpp" @ONLY)
target_sources(zpjl_core PRIVATE "${CMAKE_BINARY_DIR}/generated/key_material.cpp")
