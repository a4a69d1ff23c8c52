// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// No block of memory that the encryption gives back still holds a key or a plain text, whichever way a call ends,
// and no message names one. This program looks into every block on its way through operator delete, and breaks
// single functions of libcrypto after they have done their work.
#include "SwCrypto.h"
#include "SwString.h"
#include "test_support.h"

#include <gtest/gtest.h>
#include <openssl/evp.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <malloc.h>
#include <new>
#include <stdexcept>
#include <string>
#include <string_view>

namespace {

constexpr std::string_view kPlain = "plain text of forty-eight bytes, three blocks...";
constexpr std::string_view kPhrase = "a pass phrase that is longer than short strings";

/// What must not be found; null while nothing is looked for.
std::string_view const* g_secrets = nullptr;
std::size_t g_secretCount = 0;
std::size_t g_dirtyBlocks = 0;
std::string_view g_broken;

bool holdsSecret(void* block)
{
    std::string_view const bytes(static_cast<char const*>(block), malloc_usable_size(block));
    return std::any_of(g_secrets, g_secrets + g_secretCount,
                       [&](std::string_view secret) { return bytes.find(secret) != std::string_view::npos; });
}

/// Neither this nor `take` is inlined: seen together with its callers, the pair looks mismatched to the compiler.
[[gnu::noinline]] void give(void* block) noexcept
{
    if (block != nullptr && g_secrets != nullptr && holdsSecret(block)) {
        ++g_dirtyBlocks;
    }
    std::free(block);
}

[[gnu::noinline]] void* take(std::size_t size)
{
    std::size_t const rounded = (size + alignof(std::max_align_t)) / alignof(std::max_align_t);
    void* const block = std::aligned_alloc(alignof(std::max_align_t), rounded * alignof(std::max_align_t));
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    // Zeroed: what an earlier owner left behind is not this owner's fault.
    return std::memset(block, 0, malloc_usable_size(block));
}

template <typename Function>
Function* real(char const* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

/// The digest and the parts of the plain text that betray it.
class Watch {
public:
    Watch()
    {
        {
            SwCrypto::Bytes const key = SwCrypto::deriveKey(kPhrase);
            std::copy(key.begin(), key.end(), key_);
        }
        secrets_[0] = std::string_view(key_, 16);
        secrets_[1] = std::string_view(key_ + 16, 16);
        secrets_[2] = kPlain.substr(0, 16);
        secrets_[3] = kPlain.substr(32, 16);
        secrets_[4] = kPhrase.substr(0, 16);
        g_dirtyBlocks = 0;
        g_secretCount = std::size(secrets_);
        g_secrets = secrets_;
    }
    Watch(Watch const&) = delete;
    Watch& operator=(Watch const&) = delete;
    ~Watch() { g_secrets = nullptr; }

private:
    char key_[32];
    std::string_view secrets_[5];
};

}  // namespace

void* operator new(std::size_t size)
{
    return take(size);
}
void* operator new[](std::size_t size)
{
    return take(size);
}
void operator delete(void* block) noexcept
{
    give(block);
}
void operator delete[](void* block) noexcept
{
    give(block);
}
void operator delete(void* block, std::size_t /*size*/) noexcept
{
    give(block);
}
void operator delete[](void* block, std::size_t /*size*/) noexcept
{
    give(block);
}

extern "C" {
int EVP_CipherUpdate(EVP_CIPHER_CTX* context, unsigned char* out, int* produced, unsigned char const* in, int size)
{
    int const done = real<decltype(EVP_CipherUpdate)>("EVP_CipherUpdate")(context, out, produced, in, size);
    return g_broken == "EVP_CipherUpdate" ? 0 : done;
}
int EVP_CipherFinal_ex(EVP_CIPHER_CTX* context, unsigned char* out, int* produced)
{
    int const done = real<decltype(EVP_CipherFinal_ex)>("EVP_CipherFinal_ex")(context, out, produced);
    return g_broken == "EVP_CipherFinal_ex" ? 0 : done;
}
int EVP_DigestFinal_ex(EVP_MD_CTX* context, unsigned char* out, unsigned int* size)
{
    int const done = real<decltype(EVP_DigestFinal_ex)>("EVP_DigestFinal_ex")(context, out, size);
    return g_broken == "EVP_DigestFinal_ex" ? 0 : done;
}
}

TEST(SwCryptoCleanse, TheWatchSeesWhatIsLeftBehind)
{
    Watch const watch;
    {
        std::string const leftBehind(kPlain);
    }
    EXPECT_EQ(g_dirtyBlocks, 1U);
    // Whoever takes a key of a pass phrase has to cleanse it.
    SwCrypto::deriveKey(kPhrase);
    EXPECT_EQ(g_dirtyBlocks, 2U);
}

TEST(SwCryptoCleanse, NothingIsLeftBehindOnAnyWay)
{
    std::string const cipherText = SwCrypto::encryptText(kPlain, kPhrase);
    // One block of another text: decrypts, but to no padding.
    std::string const noPadding =
        SwCrypto::encodeBase64(SwCrypto::cryptAES_ECB(SwCrypto::Bytes(32, 'x'), SwCrypto::deriveKey(kPhrase), true));
    for (std::string_view const broken : {"", "EVP_CipherUpdate", "EVP_CipherFinal_ex", "EVP_DigestFinal_ex"}) {
        SCOPED_TRACE(broken);
        std::string plain;
        std::string again;
        bool thrown = false;
        Watch const watch;
        g_broken = broken;
        try {
            again = SwCrypto::encryptText(kPlain, kPhrase);
        } catch (std::runtime_error const&) {
            thrown = true;
        }
        EXPECT_EQ(thrown, !broken.empty());
        thrown = false;
        try {
            plain = SwCrypto::decryptText(cipherText, kPhrase);
            again = SwCrypto::decryptText(std::string_view(noPadding).substr(0, 20), kPhrase);
        } catch (std::exception const&) {
            thrown = true;
        }
        g_broken = {};
        EXPECT_TRUE(thrown) << "at the latest by the text that is cut within a block";
        EXPECT_EQ(plain, broken.empty() ? kPlain : "");
        EXPECT_EQ(g_dirtyBlocks, 0U);
        g_secrets = nullptr;  // `plain` belongs to this test
    }
}

TEST(SwCryptoCleanse, MessagesNameNeitherKeyNorText)
{
    SwString const plain{std::string(kPlain)};
    SwString const phrase{std::string(kPhrase)};
    SwString const cipherText = plain.encryptAES(phrase);
    for (std::string_view const broken : {"", "EVP_CipherUpdate", "EVP_CipherFinal_ex", "EVP_DigestFinal_ex"}) {
        SCOPED_TRACE(broken);
        std::string const lines = framework_test::standardErrorOf([&] {
            g_broken = broken;
            plain.encryptAES(phrase);
            SwString(cipherText).decryptAES(phrase);
            SwString(std::string(kPlain)).decryptAES(phrase);
            SwString(cipherText).decryptAES("another");
            SwCrypto::decryptAES("", std::string(kPhrase));
            g_broken = {};
        });
        EXPECT_EQ(lines.find(kPlain.substr(0, 8)), std::string::npos) << lines;
        EXPECT_EQ(lines.find(kPhrase.substr(0, 8)), std::string::npos) << lines;
        EXPECT_NE(lines.find("Decryption error: "), std::string::npos);
    }
}
