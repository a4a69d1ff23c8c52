// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Text encryption over libcrypto's EVP interface: the block cipher, the key of a pass phrase, base64,
// and the text operations made of them. SwString and, through it, the JSON reader and writer call it.
#include "SwCrypto.h"

#include "sw_diagnostic.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>

#include <climits>
#include <cstddef>
#include <memory>
#include <new>
#include <stdexcept>

namespace {

constexpr std::size_t kBlockBytes = 16;
constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

/// Overwrites a buffer that held a key or plain text when its scope ends.
class CleanseAtExit {
public:
    explicit CleanseAtExit(SwCrypto::Bytes& secret) : secret_(secret) {}
    CleanseAtExit(CleanseAtExit const&) = delete;
    CleanseAtExit& operator=(CleanseAtExit const&) = delete;
    ~CleanseAtExit() { OPENSSL_cleanse(secret_.data(), secret_.size()); }

private:
    SwCrypto::Bytes& secret_;
};

struct CipherContextDeleter {
    void operator()(EVP_CIPHER_CTX* context) const { EVP_CIPHER_CTX_free(context); }
};
struct DigestContextDeleter {
    void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
};

EVP_CIPHER const* ecbCipher(std::size_t keyBytes)
{
    switch (keyBytes) {
    case 16:
        return EVP_aes_128_ecb();
    case 24:
        return EVP_aes_192_ecb();
    case 32:
        return EVP_aes_256_ecb();
    default:
        throw std::invalid_argument("Invalid AES key size.");
    }
}

/// A copy of `data` with PKCS#7 padding: n bytes of value n, a whole block when nothing is missing.
SwCrypto::Bytes padded(SwCrypto::Bytes const& data)
{
    std::size_t const padding = kBlockBytes - data.size() % kBlockBytes;
    SwCrypto::Bytes result;
    // Reserved at once: growing would leave plain text behind in the smaller buffer.
    result.reserve(data.size() + padding);
    result.insert(result.end(), data.begin(), data.end());
    result.insert(result.end(), padding, static_cast<unsigned char>(padding));
    return result;
}

/// One run of the cipher without library padding; false when any step fails.
bool runCipher(EVP_CIPHER_CTX* context, EVP_CIPHER const* cipher, SwCrypto::Bytes const& key, bool encrypt,
               SwCrypto::Bytes const& input, SwCrypto::Bytes& output, std::size_t& produced)
{
    if (input.size() > static_cast<std::size_t>(INT_MAX)) {
        return false;
    }
    int updated = 0;
    int finished = 0;
    if (EVP_CipherInit_ex(context, cipher, nullptr, key.data(), nullptr, encrypt ? 1 : 0) != 1 ||
        EVP_CIPHER_CTX_set_padding(context, 0) != 1 ||
        EVP_CipherUpdate(context, output.data(), &updated, input.data(), static_cast<int>(input.size())) != 1 ||
        EVP_CipherFinal_ex(context, output.data() + updated, &finished) != 1) {
        return false;
    }
    produced = static_cast<std::size_t>(updated) + static_cast<std::size_t>(finished);
    return true;
}

/// How many bytes of PKCS#7 padding end the plain text; 0 when what stands there is no padding.
std::size_t paddingLength(SwCrypto::Bytes const& plain)
{
    std::size_t const length = plain.back();
    if (length < 1 || length > kBlockBytes || length > plain.size()) {
        return 0;
    }
    for (std::size_t i = plain.size() - length; i < plain.size(); ++i) {
        if (plain[i] != length) {
            return 0;
        }
    }
    return length;
}

/// What `operation` gives; when bad data or the library fails it, one line and "".
template <typename Operation>
std::string textOrReport(std::string_view message, Operation const& operation)
{
    try {
        return operation();
    } catch (std::bad_alloc const&) {
        throw;
    } catch (std::exception const& failure) {
        sw_detail::writeDiagnostic(message, failure.what());
        return {};
    }
}

}  // namespace

SwCrypto::Bytes SwCrypto::cryptAES_ECB(Bytes const& data, Bytes const& key, bool encrypt)
{
    if (key.size() != 16 && key.size() != 24 && key.size() != 32) {
        throw std::invalid_argument("Invalid AES key size. Key must be 16, 24, or 32 bytes.");
    }
    Bytes input = encrypt ? padded(data) : data;
    CleanseAtExit const cleanseInput(input);
    if (!encrypt && input.size() % kBlockBytes != 0) {
        throw std::invalid_argument("Invalid data size for AES-ECB (must be multiple of 16).");
    }
    EVP_CIPHER const* const cipher = ecbCipher(key.size());
    if (cipher == nullptr) {
        throw std::runtime_error("EVP AES cipher unavailable.");
    }
    std::unique_ptr<EVP_CIPHER_CTX, CipherContextDeleter> const context(EVP_CIPHER_CTX_new());
    if (!context) {
        throw std::runtime_error("EVP_CIPHER_CTX_new failed.");
    }
    Bytes output(input.size() + kBlockBytes);
    std::size_t produced = 0;
    if (!runCipher(context.get(), cipher, key, encrypt, input, output, produced)) {
        OPENSSL_cleanse(output.data(), output.size());
        throw std::runtime_error(encrypt ? "EVP AES encrypt failed." : "EVP AES decrypt failed.");
    }
    output.resize(produced);
    return output;
}

SwCrypto::Bytes SwCrypto::deriveKey(std::string_view passPhrase)
{
    EVP_MD const* const digest = EVP_sha256();
    if (digest == nullptr) {
        throw std::runtime_error("EVP sha algo unavailable.");
    }
    std::unique_ptr<EVP_MD_CTX, DigestContextDeleter> const context(EVP_MD_CTX_new());
    if (!context) {
        throw std::runtime_error("EVP_MD_CTX_new failed.");
    }
    Bytes key(EVP_MAX_MD_SIZE);
    unsigned int length = 0;
    if (EVP_DigestInit_ex(context.get(), digest, nullptr) != 1 ||
        EVP_DigestUpdate(context.get(), passPhrase.data(), passPhrase.size()) != 1 ||
        EVP_DigestFinal_ex(context.get(), key.data(), &length) != 1) {
        OPENSSL_cleanse(key.data(), key.size());
        throw std::runtime_error("EVP digest operation failed.");
    }
    key.resize(length);
    return key;
}

std::string SwCrypto::encodeBase64(Bytes const& bytes)
{
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        std::size_t const left = bytes.size() - i;
        unsigned const second = left > 1 ? bytes[i + 1] : 0U;
        unsigned const third = left > 2 ? bytes[i + 2] : 0U;
        unsigned const group = static_cast<unsigned>(bytes[i]) << 16U | second << 8U | third;
        text.push_back(kAlphabet[group >> 18U]);
        text.push_back(kAlphabet[group >> 12U & 63U]);
        text.push_back(left > 1 ? kAlphabet[group >> 6U & 63U] : '=');
        text.push_back(left > 2 ? kAlphabet[group & 63U] : '=');
    }
    return text;
}

SwCrypto::Bytes SwCrypto::decodeBase64(std::string_view text)
{
    Bytes bytes;
    bytes.reserve(text.size() / 4 * 3 + 3);
    unsigned pending = 0;
    unsigned pendingBits = 0;
    for (char const symbol : text) {
        if (symbol == '=') {
            break;
        }
        std::size_t const value = kAlphabet.find(symbol);
        if (value == std::string_view::npos) {
            continue;
        }
        pending = (pending << 6U | static_cast<unsigned>(value)) & 0xFFFFU;
        pendingBits += 6;
        if (pendingBits >= 8) {
            pendingBits -= 8;
            bytes.push_back(static_cast<unsigned char>(pending >> pendingBits & 0xFFU));
        }
    }
    return bytes;
}

std::string SwCrypto::encryptText(std::string_view plain, std::string_view passPhrase)
{
    Bytes key = deriveKey(passPhrase);
    CleanseAtExit const cleanseKey(key);
    Bytes data(plain.begin(), plain.end());
    CleanseAtExit const cleanseData(data);
    return encodeBase64(cryptAES_ECB(data, key, true));
}

std::string SwCrypto::decryptText(std::string_view cipherText, std::string_view passPhrase)
{
    Bytes key = deriveKey(passPhrase);
    CleanseAtExit const cleanseKey(key);
    Bytes plain = cryptAES_ECB(decodeBase64(cipherText), key, false);
    CleanseAtExit const cleansePlain(plain);
    if (plain.empty()) {
        throw std::invalid_argument("Invalid data: empty.");
    }
    // Padding that is none stays: a wrong pass phrase shows as odd bytes, not as an error.
    auto const end = plain.end() - static_cast<std::ptrdiff_t>(paddingLength(plain));
    return std::string(plain.begin(), end);
}

std::string SwCrypto::encryptOrReport(std::string_view plain, std::string_view passPhrase)
{
    return textOrReport("Encryption error: ", [&] { return encryptText(plain, passPhrase); });
}

std::string SwCrypto::decryptOrReport(std::string_view cipherText, std::string_view passPhrase)
{
    return textOrReport("Decryption error: ", [&] { return decryptText(cipherText, passPhrase); });
}

std::string SwCrypto::decryptAES(std::string const& data, std::string const& key)
{
    try {
        return decryptOrReport(data, key);
    } catch (std::bad_alloc const& failure) {
        sw_detail::writeDiagnostic("Decryption error: ", failure.what());
        return {};
    }
}
