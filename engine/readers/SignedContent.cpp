// What lies inside a signed envelope.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/SignedContent.h"

#include <openssl/bio.h>
#include <openssl/cms.h>
#include <openssl/err.h>
#include <openssl/objects.h>

#include <climits>
#include <memory>

namespace engine {

std::optional<std::string> UnwrapSigned(std::string_view der) {
    if (der.empty() || der.size() > INT_MAX)
        return std::nullopt;
    const std::unique_ptr<BIO, decltype(&BIO_free)> in(
        BIO_new_mem_buf(der.data(), static_cast<int>(der.size())), BIO_free);
    const std::unique_ptr<CMS_ContentInfo, decltype(&CMS_ContentInfo_free)> envelope(
        in == nullptr ? nullptr : d2i_CMS_bio(in.get(), nullptr), CMS_ContentInfo_free);
    std::optional<std::string> found;
    if (envelope != nullptr && OBJ_obj2nid(CMS_get0_type(envelope.get())) == NID_pkcs7_signed) {
        ASN1_OCTET_STRING** const content = CMS_get0_content(envelope.get());
        if (content != nullptr && *content != nullptr)
            found.emplace(reinterpret_cast<const char*>(ASN1_STRING_get0_data(*content)),
                          static_cast<std::size_t>(ASN1_STRING_length(*content)));
    }
    ERR_clear_error();
    return found;
}

} // namespace engine
