#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include <openssl/types.h>

namespace quorvex::services
{

// MD5 identifies what is uploaded, because the protocol's clients announce their files by it.
class Md5
{
public:
    Md5();
    void Append(std::string_view bytes);

    // 32 lowercase hexadecimal digits; the object is used up.
    std::string Finish();

private:
    struct Free
    {
        void operator()(EVP_MD_CTX* context) const;
    };

    std::unique_ptr<EVP_MD_CTX, Free> context_;
};

std::string ToHex(std::string_view bytes);

std::string Sha256(std::string_view text);

std::string RandomBytes(std::size_t count);

// 32 hexadecimal digits, the length that the protocol's records have room for.
std::string RandomKey();

std::string DerivePasswordHash(std::string_view password, std::string_view salt, int iterations);

// Takes the same time wherever the first difference is.
bool EqualSecrets(std::string_view left, std::string_view right);

} // namespace quorvex::services
