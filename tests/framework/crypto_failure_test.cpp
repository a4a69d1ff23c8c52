// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The failures of libcrypto, made to happen: this program defines some of its functions itself, which takes
// their place for the framework, and lets the real ones through but for the one that a test breaks.
#include "SwCrypto.h"

#include "SwJson.h"
#include "SwString.h"
#include "test_support.h"

#include <gtest/gtest.h>
#include <openssl/evp.h>

#include <dlfcn.h>
#include <stdexcept>
#include <string>

using framework_test::standardErrorOf;

namespace {

/// The function that fails while it is set.
std::string& broken()
{
    static std::string name;
    return name;
}

/// Contexts that were made and not freed.
int livingContexts = 0;

template <typename Function>
Function* real(char const* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" {
EVP_CIPHER const* EVP_aes_256_ecb()
{
    return broken() == "EVP_aes_256_ecb" ? nullptr : real<EVP_CIPHER const*()>("EVP_aes_256_ecb")();
}
EVP_CIPHER_CTX* EVP_CIPHER_CTX_new()
{
    if (broken() == "EVP_CIPHER_CTX_new") {
        return nullptr;
    }
    ++livingContexts;
    return real<EVP_CIPHER_CTX*()>("EVP_CIPHER_CTX_new")();
}
void EVP_CIPHER_CTX_free(EVP_CIPHER_CTX* context)
{
    --livingContexts;
    real<void(EVP_CIPHER_CTX*)>("EVP_CIPHER_CTX_free")(context);
}
int EVP_CipherInit_ex(EVP_CIPHER_CTX* context, EVP_CIPHER const* cipher, ENGINE* engine, unsigned char const* key,
                      unsigned char const* vector, int encrypt)
{
    return broken() == "EVP_CipherInit_ex"
               ? 0
               : real<decltype(EVP_CipherInit_ex)>("EVP_CipherInit_ex")(context, cipher, engine, key, vector, encrypt);
}
int EVP_CIPHER_CTX_set_padding(EVP_CIPHER_CTX* context, int padding)
{
    return broken() == "EVP_CIPHER_CTX_set_padding"
               ? 0
               : real<decltype(EVP_CIPHER_CTX_set_padding)>("EVP_CIPHER_CTX_set_padding")(context, padding);
}
int EVP_CipherUpdate(EVP_CIPHER_CTX* context, unsigned char* out, int* produced, unsigned char const* in, int size)
{
    return broken() == "EVP_CipherUpdate"
               ? 0
               : real<decltype(EVP_CipherUpdate)>("EVP_CipherUpdate")(context, out, produced, in, size);
}
int EVP_CipherFinal_ex(EVP_CIPHER_CTX* context, unsigned char* out, int* produced)
{
    return broken() == "EVP_CipherFinal_ex"
               ? 0
               : real<decltype(EVP_CipherFinal_ex)>("EVP_CipherFinal_ex")(context, out, produced);
}
EVP_MD const* EVP_sha256()
{
    return broken() == "EVP_sha256" ? nullptr : real<EVP_MD const*()>("EVP_sha256")();
}
EVP_MD_CTX* EVP_MD_CTX_new()
{
    if (broken() == "EVP_MD_CTX_new") {
        return nullptr;
    }
    ++livingContexts;
    return real<EVP_MD_CTX*()>("EVP_MD_CTX_new")();
}
void EVP_MD_CTX_free(EVP_MD_CTX* context)
{
    --livingContexts;
    real<void(EVP_MD_CTX*)>("EVP_MD_CTX_free")(context);
}
int EVP_DigestInit_ex(EVP_MD_CTX* context, EVP_MD const* digest, ENGINE* engine)
{
    return broken() == "EVP_DigestInit_ex"
               ? 0
               : real<decltype(EVP_DigestInit_ex)>("EVP_DigestInit_ex")(context, digest, engine);
}
int EVP_DigestUpdate(EVP_MD_CTX* context, void const* data, std::size_t size)
{
    return broken() == "EVP_DigestUpdate" ? 0
                                          : real<decltype(EVP_DigestUpdate)>("EVP_DigestUpdate")(context, data, size);
}
int EVP_DigestFinal_ex(EVP_MD_CTX* context, unsigned char* out, unsigned int* size)
{
    return broken() == "EVP_DigestFinal_ex"
               ? 0
               : real<decltype(EVP_DigestFinal_ex)>("EVP_DigestFinal_ex")(context, out, size);
}
}

TEST(SwCryptoFailure, EveryFailureOfTheLibraryHasItsMessage)
{
    struct Row {
        char const* function;
        char const* encrypting;
        char const* decrypting;
    };
    Row const rows[] = {
        {"EVP_aes_256_ecb", "EVP AES cipher unavailable.", "EVP AES cipher unavailable."},
        {"EVP_CIPHER_CTX_new", "EVP_CIPHER_CTX_new failed.", "EVP_CIPHER_CTX_new failed."},
        {"EVP_CipherInit_ex", "EVP AES encrypt failed.", "EVP AES decrypt failed."},
        {"EVP_CIPHER_CTX_set_padding", "EVP AES encrypt failed.", "EVP AES decrypt failed."},
        {"EVP_CipherUpdate", "EVP AES encrypt failed.", "EVP AES decrypt failed."},
        {"EVP_CipherFinal_ex", "EVP AES encrypt failed.", "EVP AES decrypt failed."},
        {"EVP_sha256", "EVP sha algo unavailable.", "EVP sha algo unavailable."},
        {"EVP_MD_CTX_new", "EVP_MD_CTX_new failed.", "EVP_MD_CTX_new failed."},
        {"EVP_DigestInit_ex", "EVP digest operation failed.", "EVP digest operation failed."},
        {"EVP_DigestUpdate", "EVP digest operation failed.", "EVP digest operation failed."},
        {"EVP_DigestFinal_ex", "EVP digest operation failed.", "EVP digest operation failed."},
    };
    std::string const cipherText = SwCrypto::encryptText("text", "key");
    for (Row const& row : rows) {
        SCOPED_TRACE(row.function);
        broken() = row.function;
        std::string thrown;
        try {
            SwCrypto::encryptText("text", "key");
        } catch (std::runtime_error const& failure) {
            thrown = failure.what();
        }
        EXPECT_EQ(thrown, row.encrypting);
        EXPECT_EQ(standardErrorOf([] { EXPECT_EQ(SwString("text").encryptAES("key").toStdString(), ""); }),
                  std::string("Encryption error: ") + row.encrypting + "\n");
        EXPECT_EQ(standardErrorOf([&] { EXPECT_EQ(SwString(cipherText).decryptAES("key").toStdString(), ""); }),
                  std::string("Decryption error: ") + row.decrypting + "\n");
        EXPECT_EQ(standardErrorOf([&] { EXPECT_EQ(SwCrypto::decryptAES(cipherText, "key"), ""); }),
                  std::string("Decryption error: ") + row.decrypting + "\n");
        EXPECT_EQ(livingContexts, 0);
        broken().clear();
    }
    EXPECT_EQ(SwCrypto::decryptText(cipherText, "key"), "text");
}

TEST(SwCryptoFailure, AFailingWriterLeavesScalarsOutAndStringsEmpty)
{
    SwJsonValue const value =
        SwJsonObject{{"b", true}, {"d", 2.5}, {"i", 1}, {"n", nullptr}, {"o", SwJsonObject()}, {"s", "text"}};
    std::string const line = "Encryption error: EVP sha algo unavailable.\n";
    SwString text;
    broken() = "EVP_sha256";
    std::string const lines = standardErrorOf([&] { SwJsonDocument::generateJson(value, text, false, 0, "key"); });
    broken().clear();
    EXPECT_EQ(text.toStdString(), "{\"b\": ,\"d\": ,\"i\": ,\"n\": null,\"o\": {},\"s\": \"\"}");
    EXPECT_EQ(lines, line + line + line + line);
}

TEST(SwCryptoFailure, AFailingReaderGivesEmptyStrings)
{
    std::string const cipherText = SwCrypto::encryptText("7", "key");
    std::string const line = "Decryption error: EVP sha algo unavailable.\n";
    SwString error;
    SwJsonDocument document;
    broken() = "EVP_sha256";
    std::string const lines = standardErrorOf(
        [&] { document = SwJsonDocument::fromJson("[" + cipherText + ",\"" + cipherText + "\"]", "key", error); });
    broken().clear();
    EXPECT_EQ(error.toStdString(), "");
    EXPECT_TRUE(document.array() == (SwJsonArray{"", ""}));
    EXPECT_EQ(lines, line + line);
}
