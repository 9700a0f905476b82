#pragma once

// The fields of a stamp of the Authenticode exchange, and the message that is kept in step with them.

#include <memory>

#include "platform/cryptoapi.h"
#include "tsp/cms_stamp.h"

namespace Quillmark::PKI::TSP {

struct QUILLMARK_API CMSStampImpl {
    /// Chooses the copy that has no provider yet.
    struct WithoutProvider {};

    CMSStampImpl() = default;
    /// The copy has a reference of its own on the provider.
    CMSStampImpl(const CMSStampImpl& other);
    CMSStampImpl(const CMSStampImpl& other, WithoutProvider);
    CMSStampImpl& operator=(const CMSStampImpl&) = delete;
    /// Releases the provider.
    ~CMSStampImpl();

    /// Takes the provider of `other`, with a reference of its own.
    void share_provider(const CMSStampImpl& other);
    /// Signs the fields into `stampMessage`; nothing happens before `sign` asked for it. After a failure the
    /// message is the old one.
    void update();

    CBlob content;
    CDateTime signingTime{0L, 0};
    std::unique_ptr<CBlobList> certificates;
    HCRYPTPROV providerHandle = 0;  ///< after a failed `sign` one that is released already
    DWORD keySpec = 0;
    CBlob signerCertificate;
    ASN1::CAlgorithmIdentifierEx signerHashAlgorithm;
    bool signingRequested = false;
    CBlob stampMessage;
};

}  // namespace Quillmark::PKI::TSP
