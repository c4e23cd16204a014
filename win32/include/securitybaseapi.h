// Users and rights: tokens, security identifiers, impersonation, access checks, the user's name.
#pragma once

#include "minwindef.h"

using BOOLEAN = BYTE;
using PSID = void*;
using PSECURITY_DESCRIPTOR = void*;
using SECURITY_INFORMATION = DWORD;

// ---- Rights to objects and files
#define DELETE 0x00010000u
#define READ_CONTROL 0x00020000u
#define WRITE_DAC 0x00040000u
#define WRITE_OWNER 0x00080000u
#define SYNCHRONIZE 0x00100000u
#define MAXIMUM_ALLOWED 0x02000000u
#define FILE_READ_ATTRIBUTES 0x0080u
#define FILE_DELETE_CHILD 0x0040u
#define FILE_GENERIC_READ 0x00120089u
#define FILE_GENERIC_WRITE 0x00120116u
#define FILE_GENERIC_EXECUTE 0x001200A0u
#define FILE_ALL_ACCESS 0x001F01FFu
#define OWNER_SECURITY_INFORMATION 0x00000001u
#define GROUP_SECURITY_INFORMATION 0x00000002u
#define DACL_SECURITY_INFORMATION 0x00000004u
struct GENERIC_MAPPING {
    ACCESS_MASK GenericRead;
    ACCESS_MASK GenericWrite;
    ACCESS_MASK GenericExecute;
    ACCESS_MASK GenericAll;
};
using PGENERIC_MAPPING = GENERIC_MAPPING*;
struct LUID {
    DWORD LowPart;
    LONG HighPart;
};
struct LUID_AND_ATTRIBUTES {
    LUID Luid;
    DWORD Attributes;
};
struct PRIVILEGE_SET {
    DWORD PrivilegeCount;
    DWORD Control;
    LUID_AND_ATTRIBUTES Privilege[1];
};
static_assert(sizeof(PRIVILEGE_SET) == 20);
using PPRIVILEGE_SET = PRIVILEGE_SET*;
QV_HOST_API BOOL GetFileSecurityW(LPCWSTR name, SECURITY_INFORMATION wanted,
                                  PSECURITY_DESCRIPTOR descriptor, DWORD bytes, LPDWORD needed);
QV_HOST_API void MapGenericMask(PDWORD access, PGENERIC_MAPPING mapping);
QV_HOST_API BOOL AccessCheck(PSECURITY_DESCRIPTOR descriptor, HANDLE token, DWORD desired,
                             PGENERIC_MAPPING mapping, PPRIVILEGE_SET privileges, LPDWORD bytes,
                             LPDWORD granted, LPBOOL status);

// ---- Security identifiers
#define SECURITY_WORLD_SID_AUTHORITY \
    { 0, 0, 0, 0, 0, 1 }
#define SECURITY_NT_AUTHORITY \
    { 0, 0, 0, 0, 0, 5 }
#define SECURITY_WORLD_RID 0
#define SECURITY_BUILTIN_DOMAIN_RID 32
#define DOMAIN_ALIAS_RID_ADMINS 544
#define DOMAIN_ALIAS_RID_USERS 545
struct SID_IDENTIFIER_AUTHORITY {
    BYTE Value[6];
};
using PSID_IDENTIFIER_AUTHORITY = SID_IDENTIFIER_AUTHORITY*;
struct SID_AND_ATTRIBUTES {
    PSID Sid;
    DWORD Attributes;
};
QV_HOST_API BOOL AllocateAndInitializeSid(PSID_IDENTIFIER_AUTHORITY authority, BYTE count, DWORD a,
                                          DWORD b, DWORD c, DWORD d, DWORD e, DWORD f, DWORD g,
                                          DWORD h, PSID* sid);
QV_HOST_API PVOID FreeSid(PSID sid);
QV_HOST_API BOOL EqualSid(PSID a, PSID b);

// ---- Tokens and impersonation
#define TOKEN_DUPLICATE 0x0002u
#define TOKEN_IMPERSONATE 0x0004u
#define TOKEN_QUERY 0x0008u
#define TOKEN_ALL_ACCESS 0x000F01FFu
#define SE_GROUP_MANDATORY 0x00000001u
#define SE_GROUP_ENABLED_BY_DEFAULT 0x00000002u
#define SE_GROUP_ENABLED 0x00000004u
#define SE_GROUP_OWNER 0x00000008u
#define SE_GROUP_USE_FOR_DENY_ONLY 0x00000010u
enum TOKEN_INFORMATION_CLASS { TokenUser = 1, TokenGroups = 2 };
enum SECURITY_IMPERSONATION_LEVEL {
    SecurityAnonymous,
    SecurityIdentification,
    SecurityImpersonation,
    SecurityDelegation
};
struct TOKEN_GROUPS {
    DWORD GroupCount;
    SID_AND_ATTRIBUTES Groups[1];
};
QV_HOST_API BOOL OpenProcessToken(HANDLE process, DWORD access, LPHANDLE token);
QV_HOST_API BOOL OpenThreadToken(HANDLE thread, DWORD access, BOOL as_self, LPHANDLE token);
QV_HOST_API BOOL GetTokenInformation(HANDLE token, TOKEN_INFORMATION_CLASS kind, LPVOID buffer,
                                     DWORD bytes, LPDWORD needed);
QV_HOST_API BOOL ImpersonateSelf(SECURITY_IMPERSONATION_LEVEL level);
QV_HOST_API BOOL RevertToSelf();

QV_HOST_API BOOL GetUserNameW(LPWSTR buffer, LPDWORD size);
