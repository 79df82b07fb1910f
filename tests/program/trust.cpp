// Adds an authority to those that the player trusts: trust CERTIFICATE.DER
#include "unit/temporary_folder.h"

#include <windows.h>

#include <shellapi.h>
#include <wincrypt.h>

int main() {
    // Windows hands main its words in a code page, and C++ libraries differ in which one they
    // take a path's text for.
    int count = 0;
    wchar_t** const words = ::CommandLineToArgvW(::GetCommandLineW(), &count);
    const std::string bytes = ca::test::readFile(words[1]);
    ::LocalFree(words);
    const HCERTSTORE store =
        ::CertOpenStore(CERT_STORE_PROV_SYSTEM_W, 0, 0, CERT_SYSTEM_STORE_CURRENT_USER, L"Root");
    const bool added = ::CertAddEncodedCertificateToStore(
        store, X509_ASN_ENCODING, reinterpret_cast<const BYTE*>(bytes.data()),
        static_cast<DWORD>(bytes.size()), CERT_STORE_ADD_REPLACE_EXISTING, nullptr);
    return ::CertCloseStore(store, 0) && added ? 0 : 1;
}
