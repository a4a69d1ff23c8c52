// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// String encryption over OpenSSL's EVP interface. What it is: AES in ECB mode under the unsalted
// SHA-256 of a pass phrase, without authentication. What it is not: protection against anybody who
// can compare or change cipher texts: equal texts under one phrase have equal cipher texts, and nobody
// notices blocks that were swapped, repeated or left out.
#pragma once

#include <string>
#include <string_view>
#include <vector>

class SwCrypto {
public:
    using Bytes = std::vector<unsigned char>;

    /// Runs AES-ECB over `data` with a key of 16, 24 or 32 bytes. Encrypting appends PKCS#7 padding;
    /// decrypting leaves the padding to the caller.
    /// Throws std::invalid_argument
    ///   "Invalid AES key size. Key must be 16, 24, or 32 bytes." or
    ///   "Invalid data size for AES-ECB (must be multiple of 16).",
    /// and std::runtime_error "EVP AES cipher unavailable.", "EVP_CIPHER_CTX_new failed.",
    /// "EVP AES encrypt failed." or "EVP AES decrypt failed.".
    static Bytes cryptAES_ECB(Bytes const& data, Bytes const& key, bool encrypt);

    /// The AES-256 key of a pass phrase: its SHA-256 digest (32 bytes). Throws std::runtime_error
    /// "EVP sha algo unavailable.", "EVP_MD_CTX_new failed." or "EVP digest operation failed.".
    static Bytes deriveKey(std::string_view passPhrase);

    /// Standard base64 (RFC 4648, section 4) with "=" padding.
    static std::string encodeBase64(Bytes const& bytes);

    /// The bytes of base64 text. Bytes outside the alphabet are skipped, "=" ends the text, an
    /// incomplete last byte is dropped.
    static Bytes decodeBase64(std::string_view text);

    /// Cipher text of `plain` as base64; throws what the two primitives throw.
    static std::string encryptText(std::string_view plain, std::string_view passPhrase);

    /// Plain text of a base64 cipher text; padding that is not PKCS#7 is left in place. Throws what the
    /// primitives throw, and std::invalid_argument "Invalid data: empty." for an empty cipher text.
    static std::string decryptText(std::string_view cipherText, std::string_view passPhrase);

    /// encryptText and decryptText as documents use them: bad data and failures of the library write
    /// "Encryption error: " or "Decryption error: " and the reason to standard error and give "". Only a failing
    /// allocation throws: it says nothing of the data, and "" in its place would be a lost value.
    static std::string encryptOrReport(std::string_view plain, std::string_view passPhrase);
    static std::string decryptOrReport(std::string_view cipherText, std::string_view passPhrase);

    /// decryptOrReport that reports a failing allocation too.
    static std::string decryptAES(std::string const& data, std::string const& key);
};
