#include "common/Crypto.h"

#include <array>
#include <stdexcept>

#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/rand.h>

namespace quorvex::services
{

namespace
{

constexpr std::size_t PasswordHashSize = 32;

void Require(int result, const char* call)
{
    if (result != 1)
    {
        throw std::runtime_error(std::string(call) + " failed");
    }
}

unsigned char* Bytes(std::string& text)
{
    return reinterpret_cast<unsigned char*>(text.data());
}

const unsigned char* Bytes(std::string_view text)
{
    return reinterpret_cast<const unsigned char*>(text.data());
}

} // namespace

void Md5::Free::operator()(EVP_MD_CTX* context) const
{
    EVP_MD_CTX_free(context);
}

Md5::Md5() : context_(EVP_MD_CTX_new())
{
    Require(context_ != nullptr, "EVP_MD_CTX_new");
    Require(EVP_DigestInit_ex(context_.get(), EVP_md5(), nullptr), "EVP_DigestInit_ex");
}

void Md5::Append(std::string_view bytes)
{
    Require(EVP_DigestUpdate(context_.get(), bytes.data(), bytes.size()), "EVP_DigestUpdate");
}

std::string Md5::Finish()
{
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest;
    unsigned int size = 0;
    Require(EVP_DigestFinal_ex(context_.get(), digest.data(), &size), "EVP_DigestFinal_ex");
    return ToHex({reinterpret_cast<const char*>(digest.data()), size});
}

std::string ToHex(std::string_view bytes)
{
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    text.reserve(bytes.size() * 2);
    for (const char byte : bytes)
    {
        const auto value = static_cast<unsigned char>(byte);
        text += digits[value >> 4];
        text += digits[value & 15U];
    }
    return text;
}

std::string Sha256(std::string_view text)
{
    std::string digest(32, '\0');
    unsigned int size = 0;
    Require(EVP_Digest(text.data(), text.size(), Bytes(digest), &size, EVP_sha256(), nullptr), "EVP_Digest");
    return ToHex(digest);
}

std::string RandomBytes(std::size_t count)
{
    std::string bytes(count, '\0');
    Require(RAND_bytes(Bytes(bytes), static_cast<int>(count)), "RAND_bytes");
    return bytes;
}

std::string RandomKey()
{
    return ToHex(RandomBytes(16));
}

std::string DerivePasswordHash(std::string_view password, std::string_view salt, int iterations)
{
    std::string hash(PasswordHashSize, '\0');
    Require(PKCS5_PBKDF2_HMAC(password.data(), static_cast<int>(password.size()), Bytes(salt),
                              static_cast<int>(salt.size()), iterations, EVP_sha256(), static_cast<int>(hash.size()),
                              Bytes(hash)),
            "PKCS5_PBKDF2_HMAC");
    return hash;
}

bool EqualSecrets(std::string_view left, std::string_view right)
{
    return left.size() == right.size() && CRYPTO_memcmp(left.data(), right.data(), left.size()) == 0;
}

} // namespace quorvex::services
