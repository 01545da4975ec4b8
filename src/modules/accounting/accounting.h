// Job accounting module: tells the printer who sends the job and on whose
// account it is counted (client host, login user, address, N-up, and by the
// accounting mode the job owner, its sealed password, domain, account,
// storage ID and password, document name). It writes only
// "@PJL SET JOBATTR=..." lines, after the print type module's.
//
// The dialog has an administrator set and a user set of the same settings,
// each either fixed in the dialog or entered at print time; manageType says
// which set applies. The administrator table holds the administrator rows;
// the common table holds the client rows and the user mirror of every
// administrator row.
#pragma once

#include <array>
#include <cstdint>
#include <cstdio>

#include "engine/command.h"
#include "ticket/ticket_access.h"

// Job settings read from the ticket. Text is NUL-terminated in the printer's
// encoding; sizes include the NUL. Passwords hold the sealed base64 field.
struct JBAOption {
  char hostName[33];  // read, used by no line
  char ipAddress[46];
  int32_t infoList;
  int32_t infoSetList;
  int32_t manageType;
  int32_t userSetting;
  int32_t userIDType;
  char userID[97];
  char domainName[65];
  char userPassword[2048];
  char accountID[33];
  char storageID[73];
  char storagePassword[2048];
  int32_t userInput;
  int32_t adminUserSetting;
  int32_t adminUserIDType;
  char adminUserID[97];
  char adminDomainName[65];
  char adminUserPassword[2048];
  char adminAccountID[33];
  char adminStorageID[73];
  char adminStoragePassword[2048];
  int32_t adminUserInput;
  int32_t inputAuth;
  int32_t inputStorage;
  char inputStorageID[73];
  char inputStoragePassword[2048];
  char inputUserID[97];
  char inputDomainName[65];
  char inputUserPassword[2048];
  char inputAccountID[33];
  int32_t userIDAbsent;  // 1 when the dialog sent no user ID key
};

extern JBAOption zpjlOptionJBA;

// manageType: which set applies.
inline constexpr int32_t JBAModeListAdmin = 1;
inline constexpr int32_t JBAModeListUser = 2;
// A radio button is on.
inline constexpr int32_t OptionUserInputTypeSelected = 1;
inline constexpr int32_t OptionUserInputTypeSelectedAdmin = 1;
// User ID type: the login user name, or the entered user ID.
inline constexpr int32_t OptionComInUserTypeUseLogin = 1;
inline constexpr int32_t OptionComInUserTypeUseLoginAdmin = 1;
inline constexpr int32_t OptionComInUserTypeEnterName = 2;
inline constexpr int32_t OptionComInUserTypeEnterNameAdmin = 2;
// infoList: which accounting information list the dialog shows.
inline constexpr int32_t JBAInfoListNotExist = 0;
inline constexpr int32_t JBAInfoListUserAccntSelect = 1;
inline constexpr int32_t JBAInfoListBillingSelect = 2;
inline constexpr int32_t JBAInfoListAllSelect = 3;
// infoSetList value that hides the owner's identity.
inline constexpr int32_t Case_8 = 8;
// userIDAbsent: no user ID key in the ticket.
inline constexpr int32_t JBAUserNameNotExist = 1;

// Ticket bindings, walked common table first. The UTF-8 variants read the
// user and storage IDs as UTF-8 text.
inline constexpr int32_t JBATicketDataNumCommon = 36;
inline constexpr int32_t JBATicketDataNumAdmin = 9;
extern const std::array<TicketBinding, JBATicketDataNumCommon> JBAticketDataCommon;
extern const std::array<TicketBinding, JBATicketDataNumCommon> JBAticketDataCommonForUTF8;
extern const std::array<TicketBinding, JBATicketDataNumAdmin> JBAticketDataAdmin;
extern const std::array<TicketBinding, JBATicketDataNumAdmin> JBAticketDataAdminForUTF8;

// The two format tables, constants built from one list of row descriptions.
inline constexpr int32_t JBAFmtTableAdminNum = 35;
inline constexpr int32_t JBAFmtTableCommonNum = 42;
extern const FormatEntry* const JBAFmtTableAdmin;
extern const FormatEntry* const JBAFmtTableCommon;

// Checks that each row's parameters match the control symbols of its format.
void JBAInializeDescriptionTableFromFilter();

// Reads the ticket (argv[5]) into zpjlOptionJBA and the layout buffers:
// the common table, then the administrator table. Returns 1.
int JBAGetTicketFromPDE(char* argv[]);

// Writes the administrator table, then the common table. Writes nothing
// before the tables are bound.
void JBAOutputZPJLCommandFromFilter(char* argv[], FILE* stream);
