// The part of Windows' CNG that the launcher calls, for hosts that are not Windows: SHA-256 and the
// verification of RSA signatures (PKCS#1 v1.5). OpenSSL does the work, with the processor's own
// instructions where it has them.
//
// Each call returns STATUS_SUCCESS (0) or an NTSTATUS below zero; none touches the last error.
// Handles belong to the caller. Different handles may be used by different threads at once, one
// handle by one thread at a time.
//
// Where the layer differs from Windows on purpose:
//  - The memory handed to BCryptCreateHash is checked for its size and not used.
//  - A key that could verify nothing (even modulus, even exponent) or anything (exponent 1) is
//    refused at the import.
#pragma once

#include <windows.h>

using NTSTATUS = LONG;
using BCRYPT_HANDLE = LPVOID;
using BCRYPT_ALG_HANDLE = LPVOID;
using BCRYPT_HASH_HANDLE = LPVOID;
using BCRYPT_KEY_HANDLE = LPVOID;

inline constexpr wchar_t BCRYPT_SHA256_ALGORITHM[] = L"SHA256";
inline constexpr wchar_t BCRYPT_RSA_ALGORITHM[] = L"RSA";
inline constexpr wchar_t BCRYPT_OBJECT_LENGTH[] = L"ObjectLength";
inline constexpr wchar_t BCRYPT_RSAPUBLIC_BLOB[] = L"RSAPUBLICBLOB";
inline constexpr ULONG BCRYPT_RSAPUBLIC_MAGIC = 0x31415352; // "RSA1" in memory
inline constexpr ULONG BCRYPT_PAD_PKCS1 = 2;

// The header of an "RSAPUBLICBLOB". Exponent and modulus follow it in this order, both big-endian.
struct BCRYPT_RSAKEY_BLOB {
    ULONG Magic;
    ULONG BitLength; // 512 to 16384
    ULONG cbPublicExp;
    ULONG cbModulus;
    ULONG cbPrime1; // 0 in a public key, like the next
    ULONG cbPrime2;
};

struct BCRYPT_PKCS1_PADDING_INFO {
    LPCWSTR pszAlgId;
};

// Opens "SHA256" or "RSA"; any other name is STATUS_NOT_FOUND. `implementation` null and `flags` 0.
// Costs next to nothing: the algorithm itself is fetched once per process.
NTSTATUS BCryptOpenAlgorithmProvider(BCRYPT_ALG_HANDLE* algorithm, LPCWSTR name,
                                     LPCWSTR implementation, ULONG flags);
NTSTATUS BCryptCloseAlgorithmProvider(BCRYPT_ALG_HANDLE algorithm, ULONG flags);

// "ObjectLength" of the hash provider, a ULONG: the bytes that BCryptCreateHash wants to be handed.
// Every other property is STATUS_NOT_SUPPORTED. `output` null asks for the size alone.
NTSTATUS BCryptGetProperty(BCRYPT_HANDLE algorithm, LPCWSTR property, PUCHAR output,
                           ULONG outputSize, ULONG* result, ULONG flags);

// A hash over no bytes yet. `object` has at least "ObjectLength" bytes, or is null with size 0. No
// secret, flags 0.
NTSTATUS BCryptCreateHash(BCRYPT_ALG_HANDLE algorithm, BCRYPT_HASH_HANDLE* hash, PUCHAR object,
                          ULONG objectSize, PUCHAR secret, ULONG secretSize, ULONG flags);
NTSTATUS BCryptHashData(BCRYPT_HASH_HANDLE hash, PUCHAR input, ULONG size, ULONG flags);

// The digest of all bytes fed in; `size` must be 32. The hash can't be fed or finished again.
NTSTATUS BCryptFinishHash(BCRYPT_HASH_HANDLE hash, PUCHAR output, ULONG size, ULONG flags);
NTSTATUS BCryptDestroyHash(BCRYPT_HASH_HANDLE hash);

// A public key from an "RSAPUBLICBLOB" (another type is STATUS_NOT_SUPPORTED). Refused with
// STATUS_INVALID_PARAMETER: another magic, lengths that don't add up, a modulus of fewer than 512
// or more than 16384 bits, and an exponent of more than 64 bits, which CNG takes no longer since
// Windows 10 version 1903.
NTSTATUS BCryptImportKeyPair(BCRYPT_ALG_HANDLE algorithm, BCRYPT_KEY_HANDLE importKey,
                             LPCWSTR blobType, BCRYPT_KEY_HANDLE* key, PUCHAR input, ULONG size,
                             ULONG flags);

// 0 exactly if `signature` is the key's PKCS#1 v1.5 signature of the SHA-256 digest `hash`;
// STATUS_INVALID_SIGNATURE for any other, also of another length. `padding` is a
// BCRYPT_PKCS1_PADDING_INFO naming "SHA256", `flags` BCRYPT_PAD_PKCS1.
NTSTATUS BCryptVerifySignature(BCRYPT_KEY_HANDLE key, LPVOID padding, PUCHAR hash, ULONG hashSize,
                               PUCHAR signature, ULONG signatureSize, ULONG flags);
NTSTATUS BCryptDestroyKey(BCRYPT_KEY_HANDLE key);
