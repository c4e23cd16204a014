// Registry: keys and values. On this host the registry is an SQLite database below the host root.
#pragma once

#include "minwindef.h"

inline const HKEY HKEY_CLASSES_ROOT =
    reinterpret_cast<HKEY>(static_cast<LONG_PTR>(-2147483647 - 1));
inline const HKEY HKEY_CURRENT_USER = reinterpret_cast<HKEY>(static_cast<LONG_PTR>(-2147483647));
inline const HKEY HKEY_LOCAL_MACHINE = reinterpret_cast<HKEY>(static_cast<LONG_PTR>(-2147483646));
inline const HKEY HKEY_USERS = reinterpret_cast<HKEY>(static_cast<LONG_PTR>(-2147483645));
inline const HKEY HKEY_CURRENT_CONFIG = reinterpret_cast<HKEY>(static_cast<LONG_PTR>(-2147483643));

#define REG_NONE 0u
#define REG_SZ 1u
#define REG_EXPAND_SZ 2u
#define REG_BINARY 3u
#define REG_DWORD 4u
#define REG_MULTI_SZ 7u
#define REG_QWORD 11u
#define REG_OPTION_NON_VOLATILE 0x00000000
#define KEY_QUERY_VALUE 0x0001
#define KEY_SET_VALUE 0x0002
#define KEY_CREATE_SUB_KEY 0x0004
#define KEY_ENUMERATE_SUB_KEYS 0x0008
#define KEY_READ 0x20019
#define KEY_WRITE 0x20006
#define KEY_ALL_ACCESS 0xF003F
#define KEY_WOW64_64KEY 0x0100
#define REG_CREATED_NEW_KEY 1
#define REG_OPENED_EXISTING_KEY 2

struct SECURITY_ATTRIBUTES;
QV_HOST_API LSTATUS RegOpenKeyExW(HKEY key, LPCWSTR path, DWORD options, REGSAM access,
                                  PHKEY result);
QV_HOST_API LSTATUS RegCreateKeyExW(HKEY key, LPCWSTR path, DWORD reserved, LPWSTR key_class,
                                    DWORD options, REGSAM access,
                                    const SECURITY_ATTRIBUTES* security, PHKEY result,
                                    LPDWORD disposition);
QV_HOST_API LSTATUS RegQueryValueExW(HKEY key, LPCWSTR name, LPDWORD reserved, LPDWORD type,
                                     LPBYTE data, LPDWORD bytes);
QV_HOST_API LSTATUS RegSetValueExW(HKEY key, LPCWSTR name, DWORD reserved, DWORD type,
                                   const BYTE* data, DWORD bytes);
QV_HOST_API LSTATUS RegDeleteValueW(HKEY key, LPCWSTR name);
QV_HOST_API LSTATUS RegDeleteTreeW(HKEY key, LPCWSTR path);
QV_HOST_API LSTATUS RegEnumKeyExW(HKEY key, DWORD index, LPWSTR name, LPDWORD name_size,
                                  LPDWORD reserved, LPWSTR key_class, LPDWORD class_size,
                                  FILETIME* written);
QV_HOST_API LSTATUS RegEnumValueW(HKEY key, DWORD index, LPWSTR name, LPDWORD name_size,
                                  LPDWORD reserved, LPDWORD type, LPBYTE data, LPDWORD bytes);
QV_HOST_API LSTATUS RegCloseKey(HKEY key);
