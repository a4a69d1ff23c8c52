// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

#include "SwCrypto.h"

#include "SwString.h"
#include "test_support.h"

#include <gtest/gtest.h>

#include <stdexcept>

using framework_test::standardErrorOf;

namespace {

SwCrypto::Bytes bytesOf(std::string_view text)
{
    return {text.begin(), text.end()};
}

SwCrypto::Bytes fromHex(std::string const& hex)
{
    SwCrypto::Bytes bytes;
    for (std::size_t i = 0; i + 1 < hex.size(); i += 2) {
        bytes.push_back(static_cast<unsigned char>(std::stoi(hex.substr(i, 2), nullptr, 16)));
    }
    return bytes;
}

/// The message of the exception of type Failure that `action` throws.
template <typename Failure, typename Action>
std::string messageOf(Action const& action)
{
    try {
        action();
    } catch (Failure const& failure) {
        return failure.what();
    }
    return "nothing thrown";
}

}  // namespace

// FIPS 197, appendix C: one block under keys of the three sizes.
TEST(SwCrypto, EncryptsThePublishedBlocks)
{
    struct Row {
        char const* name;
        char const* key;
        char const* cipher;
    };
    Row const rows[] = {
        {"AES-128", "000102030405060708090a0b0c0d0e0f", "69c4e0d86a7b0430d8cdb78070b4c55a"},
        {"AES-192", "000102030405060708090a0b0c0d0e0f1011121314151617", "dda97ca4864cdfe06eaf70a0ec0d7191"},
        {"AES-256", "000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f",
         "8ea2b7ca516745bfeafc49904b496089"},
    };
    SwCrypto::Bytes const plain = fromHex("00112233445566778899aabbccddeeff");
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        SwCrypto::Bytes const encrypted = SwCrypto::cryptAES_ECB(plain, fromHex(row.key), true);
        // A full block gets a whole block of padding behind it.
        ASSERT_EQ(encrypted.size(), 32U);
        EXPECT_EQ(SwCrypto::Bytes(encrypted.begin(), encrypted.begin() + 16), fromHex(row.cipher));
        SwCrypto::Bytes padded = plain;
        padded.insert(padded.end(), 16, 16);
        EXPECT_EQ(SwCrypto::cryptAES_ECB(encrypted, fromHex(row.key), false), padded);
        EXPECT_EQ(SwCrypto::cryptAES_ECB(fromHex(row.cipher), fromHex(row.key), false), plain);
    }
}

TEST(SwCrypto, PadsEveryLengthToTheNextBlock)
{
    SwCrypto::Bytes const key(32, 7);
    for (std::size_t length = 0; length <= 33; ++length) {
        SCOPED_TRACE(length);
        SwCrypto::Bytes const plain(length, 0xAB);
        SwCrypto::Bytes const encrypted = SwCrypto::cryptAES_ECB(plain, key, true);
        EXPECT_EQ(encrypted.size(), (length / 16 + 1) * 16);
        SwCrypto::Bytes padded = plain;
        padded.insert(padded.end(), 16 - length % 16, static_cast<unsigned char>(16 - length % 16));
        EXPECT_EQ(SwCrypto::cryptAES_ECB(encrypted, key, false), padded);
    }
}

TEST(SwCrypto, RefusesKeysOfOtherSizes)
{
    for (std::size_t const size : {0U, 1U, 15U, 17U, 23U, 25U, 31U, 33U, 64U}) {
        SCOPED_TRACE(size);
        for (bool const encrypt : {true, false}) {
            EXPECT_EQ(messageOf<std::invalid_argument>(
                          [&] { SwCrypto::cryptAES_ECB(SwCrypto::Bytes(16), SwCrypto::Bytes(size), encrypt); }),
                      "Invalid AES key size. Key must be 16, 24, or 32 bytes.");
        }
    }
}

TEST(SwCrypto, RefusesPartialBlocksWhenDecrypting)
{
    for (std::size_t const size : {1U, 15U, 17U, 31U}) {
        SCOPED_TRACE(size);
        EXPECT_EQ(messageOf<std::invalid_argument>(
                      [&] { SwCrypto::cryptAES_ECB(SwCrypto::Bytes(size), SwCrypto::Bytes(32), false); }),
                  "Invalid data size for AES-ECB (must be multiple of 16).");
    }
    EXPECT_TRUE(SwCrypto::cryptAES_ECB({}, SwCrypto::Bytes(32), false).empty());
}

// FIPS 180-2, appendix B, and the digest of the empty message.
TEST(SwCrypto, DerivesTheSha256OfThePassPhrase)
{
    EXPECT_EQ(SwCrypto::deriveKey(""), fromHex("e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"));
    EXPECT_EQ(SwCrypto::deriveKey("abc"), fromHex("ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"));
    EXPECT_EQ(SwCrypto::deriveKey("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq"),
              fromHex("248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1"));
}

// RFC 4648, section 10, and every symbol of the alphabet.
TEST(SwCrypto, EncodesAndDecodesBase64)
{
    struct Row {
        char const* plain;
        char const* encoded;
    };
    Row const rows[] = {{"", ""},
                        {"f", "Zg=="},
                        {"fo", "Zm8="},
                        {"foo", "Zm9v"},
                        {"foob", "Zm9vYg=="},
                        {"fooba", "Zm9vYmE="},
                        {"foobar", "Zm9vYmFy"}};
    for (Row const& row : rows) {
        SCOPED_TRACE(row.plain);
        EXPECT_EQ(SwCrypto::encodeBase64(bytesOf(row.plain)), row.encoded);
        EXPECT_EQ(SwCrypto::decodeBase64(row.encoded), bytesOf(row.plain));
    }
    std::string const alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    EXPECT_EQ(SwCrypto::encodeBase64(SwCrypto::decodeBase64(alphabet)), alphabet);
}

TEST(SwCrypto, Base64OfEveryLengthComesBack)
{
    SwCrypto::Bytes bytes;
    for (unsigned value = 0; value < 300; ++value) {
        SCOPED_TRACE(value);
        std::string const encoded = SwCrypto::encodeBase64(bytes);
        EXPECT_EQ(encoded.size() % 4, 0U);
        EXPECT_EQ(SwCrypto::decodeBase64(encoded), bytes);
        bytes.push_back(static_cast<unsigned char>(value * 37U));
    }
}

TEST(SwCrypto, Base64DecodingIsLenient)
{
    struct Row {
        char const* name;
        std::string text;
        char const* expected;
    };
    Row const rows[] = {
        {"white space is skipped", "Zm9v\r\n YmFy\t", "foobar"},
        {"bytes outside the alphabet are skipped", "Z-m_9!v", "foo"},
        {"zero and high bytes are skipped",
         std::string("Zm\0\xFF"
                     "9v",
                     6),
         "foo"},
        {"missing padding", "Zm8", "fo"},
        {"an equals sign ends the text", "Zg==Zg==", "f"},
        {"an equals sign in front", "=Zm9v", ""},
        {"an incomplete byte is dropped", "Zm9vY", "foo"},
        {"a single symbol", "Z", ""},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(SwCrypto::decodeBase64(row.text), bytesOf(row.expected));
    }
}

// Made with: printf TEXT | openssl enc -aes-256-ecb -K $(printf PHRASE | sha256sum) -a
TEST(SwCrypto, TextOperationsAgreeWithTheCommandLineTool)
{
    struct Row {
        char const* plain;
        char const* phrase;
        char const* cipherText;
    };
    Row const rows[] = {
        {"1", "secret", "MqBPZUXaUUAZ7ShNy/0gOA=="},
        {"true", "secret", "DWGzpai4I0XMUQ743d8HEA=="},
        {"48.858370", "key", "uRU/rzaqHliyKU27v0kW5w=="},
        {"a text of exactly 32 bytes......", "pass phrase",
         "sWzZqzltwl7VJ55GFFV8FhNui7ZaHTX0KFDSHoXTDEEdzIW6ACDfwbb2yjeMyBDH"},
        {"h\xC3\xA9"
         "llo",
         "cl\xC3\xA9", "wM+7smUKtMsAtsXm3GhsrA=="},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.plain);
        EXPECT_EQ(SwString(row.plain).encryptAES(row.phrase).toStdString(), row.cipherText);
        EXPECT_EQ(SwString(row.cipherText).decryptAES(row.phrase).toStdString(), row.plain);
        EXPECT_EQ(SwCrypto::decryptAES(row.cipherText, row.phrase), row.plain);
    }
}

TEST(SwCrypto, TheEmptyTextIsOneBlockOfPadding)
{
    std::string const cipherText = SwString("").encryptAES("key");
    EXPECT_EQ(cipherText.size(), 24U);
    EXPECT_EQ(cipherText.substr(22), "==");
    EXPECT_EQ(SwCrypto::cryptAES_ECB(SwCrypto::decodeBase64(cipherText), SwCrypto::deriveKey("key"), false),
              SwCrypto::Bytes(16, 16));
    EXPECT_EQ(standardErrorOf([&] { EXPECT_EQ(SwString(cipherText).decryptAES("key").toStdString(), ""); }), "");
}

TEST(SwCrypto, TheSameTextGivesTheSameCipherText)
{
    EXPECT_EQ(SwString("text").encryptAES("key"), SwString("text").encryptAES("key"));
    EXPECT_NE(SwString("text").encryptAES("key"), SwString("text").encryptAES("other"));
}

TEST(SwCrypto, EveryByteComesBack)
{
    std::string plain;
    for (int value = 0; value < 256; ++value) {
        plain.push_back(static_cast<char>(value));
    }
    EXPECT_EQ(SwString(SwString(plain).encryptAES("")).decryptAES("").toStdString(), plain);
}

TEST(SwCrypto, AnUnreadableCipherTextGivesOneLineAndTheEmptyText)
{
    struct Row {
        char const* name;
        std::string cipherText;
        char const* line;
    };
    Row const rows[] = {
        {"not whole blocks", "Zm9v", "Decryption error: Invalid data size for AES-ECB (must be multiple of 16).\n"},
        {"empty", "", "Decryption error: Invalid data: empty.\n"},
        {"nothing of the alphabet", "!!!!", "Decryption error: Invalid data: empty.\n"},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(standardErrorOf([&] { EXPECT_EQ(SwString(row.cipherText).decryptAES("key").toStdString(), ""); }),
                  row.line);
        EXPECT_EQ(standardErrorOf([&] { EXPECT_EQ(SwCrypto::decryptAES(row.cipherText, "key"), ""); }), row.line);
    }
    EXPECT_EQ(messageOf<std::invalid_argument>([] { SwCrypto::decryptText("", "key"); }), "Invalid data: empty.");
}

TEST(SwCrypto, AWrongPassPhraseNeverThrows)
{
    std::string const plain = "a text of two blocks or more";
    std::string const cipherText = SwString(plain).encryptAES("right");
    for (int i = 0; i < 1000; ++i) {
        SCOPED_TRACE(i);
        std::string const garbage = SwString(cipherText).decryptAES("wrong" + std::to_string(i));
        EXPECT_NE(garbage, plain);
        EXPECT_LE(garbage.size(), 32U);
        EXPECT_GE(garbage.size(), 16U);
    }
}

TEST(SwCrypto, WrongPaddingIsKept)
{
    SwCrypto::Bytes const key = SwCrypto::deriveKey("key");
    struct Row {
        char const* name;
        SwCrypto::Bytes block;
        std::size_t kept;
    };
    SwCrypto::Bytes zeroLast(16, 'x');
    zeroLast[15] = 0;
    SwCrypto::Bytes aboveBlock(16, 17);
    SwCrypto::Bytes uneven(16, 'x');
    uneven[14] = 2;
    uneven[15] = 3;
    SwCrypto::Bytes three(16, 'x');
    three[13] = three[14] = three[15] = 3;
    SwCrypto::Bytes one(16, 'x');
    one[15] = 1;
    Row const rows[] = {
        {"last byte 0", zeroLast, 16}, {"last byte 17", aboveBlock, 16}, {"bytes differ", uneven, 16},
        {"three of three", three, 13}, {"one of one", one, 15},          {"a whole block", SwCrypto::Bytes(16, 16), 0},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        // The padding that encryption appends stands in a block of its own; without it the row is the text's end.
        SwCrypto::Bytes cipher = SwCrypto::cryptAES_ECB(row.block, key, true);
        cipher.resize(16);
        std::string const plain = SwString(SwCrypto::encodeBase64(cipher)).decryptAES("key");
        EXPECT_EQ(bytesOf(plain), SwCrypto::Bytes(row.block.begin(), row.block.begin() + static_cast<long>(row.kept)));
    }
}
