// An RSA public key out of its PEM file, in the form that CNG imports. Pure; any thread.
#pragma once

#include <string>
#include <vector>

namespace ca::update {

// Decodes the PEM text of a SubjectPublicKeyInfo ("PUBLIC KEY") and writes its modulus and exponent
// as an RSAPUBLICBLOB. False when either can't be read; `blob` is then unchanged. Bytes behind the
// outer element are ignored, and so is the algorithm's identifier; a bare PKCS#1 key is refused.
bool readPublicKey(const std::string& pem, std::vector<unsigned char>& blob);

} // namespace ca::update
