// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/digest.h"

#include <array>
#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/rand.h>
#include <span>
#include <stdexcept>
#include <vector>

namespace service {

namespace {

std::string hexadecimal(std::span<const unsigned char> bytes)
{
    constexpr std::string_view figures = "0123456789abcdef";
    std::string text;
    for (const unsigned char byte : bytes)
        (text += figures[byte >> 4]) += figures[byte & 15];
    return text;
}

/// The algorithm of this name, to be kept: looking it up takes longer than a short text's digest.
const EVP_MD *algorithmNamed(const char *name)
{
    return EVP_MD_fetch(nullptr, name, nullptr);
}

std::string digest(std::string_view text, const EVP_MD *algorithm)
{
    std::array<unsigned char, EVP_MAX_MD_SIZE> bytes{};
    unsigned int size = 0;
    if (!algorithm || EVP_Digest(text.data(), text.size(), bytes.data(), &size, algorithm, nullptr) != 1)
        throw std::runtime_error("the cryptographic library computes no digest");
    return hexadecimal({bytes.data(), size});
}

} // namespace

std::string md5(std::string_view text)
{
    static const EVP_MD *algorithm = algorithmNamed("MD5");
    return digest(text, algorithm);
}

std::string sha256(std::string_view text)
{
    static const EVP_MD *algorithm = algorithmNamed("SHA256");
    return digest(text, algorithm);
}

std::string randomHexadecimal(std::size_t bytes)
{
    std::vector<unsigned char> random(bytes);
    if (RAND_bytes(random.data(), static_cast<int>(bytes)) != 1)
        throw std::runtime_error("the system gives no random numbers");
    return hexadecimal(random);
}

bool equalInConstantTime(std::string_view left, std::string_view right)
{
    return left.size() == right.size() && CRYPTO_memcmp(left.data(), right.data(), left.size()) == 0;
}

} // namespace service
