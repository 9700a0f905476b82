#include "authority/answer.h"

#include <new>
#include <vector>

#include "asn1/codec.h"
#include "authority/log.h"
#include "authority/text.h"
#include "support/failure.h"
#include "support/hash.h"
#include "support/reply.h"

namespace authority {

namespace {

using namespace Quillmark;
using example::HashAlgorithm;
using example::Refusal;

// The purpose that a request of the Authenticode exchange states, and the type of its content (RFC 5652 4).
constexpr char kTimeStamp[] = "1.3.6.1.4.1.311.3.2.1";
constexpr char kData[] = "1.2.840.113549.1.7.1";

// Why a request of the Authenticode exchange is not answered; thrown.
struct BadRequest {
    std::string text;
};

CBlob blob_of(const std::string& octets) {
    return CBlob(reinterpret_cast<const unsigned char*>(octets.data()), octets.size());
}

std::string text_of_octets(const CBlob& octets) {
    return std::string(reinterpret_cast<const char*>(octets.pbData()), octets.cbData());
}

std::string name_of(const HashAlgorithm& hash) {
    std::string name = hash.name;
    for (char& letter : name) {
        letter = static_cast<char>(letter >= 'A' && letter <= 'Z' ? letter - 'A' + 'a' : letter);
    }
    return name;
}

std::string hex_of(const CBlob& octets) {
    return to_hex(octets.pbData(), octets.cbData());
}

Answer reply(const PKI::TSP::CResponse& response) {
    return {200, "application/timestamp-reply", text_of_octets(response.encode())};
}

Answer reject(const Refusal& refusal, const std::string& trouble, const std::string& client) {
    Answer answer = reply(example::rejection(refusal));
    log_trouble("refused " + client + " " + example::failure_name(refusal.reason) + ": " + trouble);
    return answer;
}

std::string line_of(const PKI::TSP::CToken& token, const HashAlgorithm& hash) {
    return text_of(token.get_genTime()) + " rfc3161 " + hex_of(token.get_serialNumber()) + " " +
           token.get_policy() + " " + name_of(hash) + " " + hex_of(token.get_hashedMessage());
}

Answer stamp_query(const std::string& body, Stamper& stamper, const std::string& client) {
    const PKI::TSP::CRequest request = example::decode_request(blob_of(body));
    const HashAlgorithm& hash = example::check_request(request, stamper.terms());
    const PKI::TSP::CToken token = stamper.stamp(request);
    Answer answer = reply(example::granted(token));
    log_stamp(line_of(token, hash) + " " + client);
    return answer;
}

// `what` failed because of the request, unless memory ran out.
[[noreturn]] void refuse(const std::string& what, const CAtlException& exception) {
    if (exception == CRYPT_E_ASN1_MEMORY || exception == E_OUTOFMEMORY) {
        throw exception;
    }
    throw BadRequest{what + ": " + result_name(exception)};
}

PKI::TSP::CMSRequest decode_authenticode(const std::string& body) {
    const auto octets = from_base64(body);
    if (!octets) {
        throw BadRequest{"the request is not in base64"};
    }
    PKI::TSP::CMSRequest request;
    try {
        request.decode(CBlob(octets->data(), octets->size()));
    } catch (const CAtlException& exception) {
        refuse("the request cannot be decoded", exception);
    }
    return request;
}

// The data to be stamped.
CBlob check_authenticode(const PKI::TSP::CMSRequest& request) {
    if (request.get_timeStampAlgorithm() != std::string(kTimeStamp)) {
        throw BadRequest{"the request is for another purpose than a time-stamp"};
    }
    if (request.get_attributes() != nullptr) {
        throw BadRequest{"no attribute is known here"};
    }
    if (request.get_contentInfo().get_contentType() != std::string(kData)) {
        throw BadRequest{"only data is stamped here"};
    }
    try {
        return ASN1::fromOctetString(request.get_contentInfo().get_content());
    } catch (const CAtlException& exception) {
        refuse("the data is no octet string", exception);
    }
}

Answer stamp_authenticode(const std::string& body, Stamper& stamper, const std::string& client) {
    const CBlob data = check_authenticode(decode_authenticode(body));
    const PKI::TSP::CMSStamp stamp = stamper.stamp(ASN1::toOctetString(data));
    const CBlob octets = stamp.encode();
    Answer answer = {200, "application/octet-stream", to_base64(octets.pbData(), octets.cbData())};
    log_stamp(text_of(stamp.get_signingTime()) + " authenticode - - " + name_of(example::sha256()) + " " +
              hex_of(example::hash_of(example::sha256(), data)) + " " + client);
    return answer;
}

}  // namespace

Answer answer_query(const std::string& body, Stamper& stamper, const std::string& client) {
    try {
        return stamp_query(body, stamper, client);
    } catch (const Refusal& refusal) {
        return reject(refusal, refusal.text, client);
    } catch (...) {
        // What went wrong here is nobody's business but the operator's.
        return reject({example::systemFailure, "the authority has trouble of its own"},
                      example::describe_exception(), client);
    }
}

Answer answer_authenticode(const std::string& body, Stamper& stamper, const std::string& client) {
    try {
        return stamp_authenticode(body, stamper, client);
    } catch (const BadRequest& bad) {
        return {400, "text/plain", bad.text + "\n"};
    } catch (const Refusal& refusal) {
        return {503, "text/plain", refusal.text + "\n"};
    }
}

}  // namespace authority
