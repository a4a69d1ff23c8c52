// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Any bytes as plain text, as base64 and as cipher text; the first byte says how many of the next are the
// pass phrase. Round trips hold and decryption never throws.
#include "SwCrypto.h"
#include "SwString.h"
#include "json_fuzz_support.h"

#include <algorithm>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    if (size == 0) {
        return 0;
    }
    json_fuzz::QuietStandardError const quiet;
    std::string const bytes(reinterpret_cast<char const*>(data) + 1, size - 1);
    std::size_t const phraseSize = std::min<std::size_t>(data[0] % 16U, bytes.size());
    std::string const phrase = bytes.substr(0, phraseSize);
    std::string const text = bytes.substr(phraseSize);

    SwCrypto::Bytes const raw(text.begin(), text.end());
    std::string const encoded = SwCrypto::encodeBase64(raw);
    json_fuzz::require(encoded.size() == (raw.size() + 2) / 3 * 4, "base64 has four symbols for three bytes", encoded);
    json_fuzz::require(SwCrypto::decodeBase64(encoded) == raw, "base64 comes back", encoded);
    SwCrypto::Bytes const decoded = SwCrypto::decodeBase64(text);
    json_fuzz::require(SwCrypto::decodeBase64(SwCrypto::encodeBase64(decoded)) == decoded, "decoded bytes come back",
                       text);

    std::string const cipherText = SwString(text).encryptAES(phrase);
    json_fuzz::require(SwString(cipherText).decryptAES(phrase).toStdString() == text, "the text comes back",
                       cipherText);
    json_fuzz::require(SwCrypto::decodeBase64(cipherText).size() == (text.size() / 16 + 1) * 16,
                       "cipher text has whole blocks", cipherText);
    // As cipher text of its own: garbage or nothing, never an exception, never longer than the blocks.
    std::string const garbage = SwCrypto::decryptAES(text, phrase);
    json_fuzz::require(garbage.size() <= decoded.size(), "decryption adds no bytes", text);
    json_fuzz::require(garbage == SwString(text).decryptAES(phrase).toStdString(), "both operations agree", text);
    json_fuzz::require(SwString(cipherText).decryptAES(phrase + "x").toStdString().size() <= cipherText.size(),
                       "a wrong pass phrase gives garbage", cipherText);
    return 0;
}
