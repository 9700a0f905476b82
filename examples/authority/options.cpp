#include "authority/options.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <sstream>

#include <CLI/CLI.hpp>

#include "support/failure.h"

namespace authority {

namespace {

using example::Failure;

const example::HashAlgorithm* hash_of_name(std::string name) {
    std::transform(name.begin(), name.end(), name.begin(),
                   [](unsigned char letter) { return std::toupper(letter); });
    return name == example::sha1().name ? &example::sha1() : example::find_hash(name);
}

std::string check_hash(const std::string& name) {
    return hash_of_name(name) != nullptr
               ? ""
               : "unknown hash " + name +
                     "; sha1, sha256, sha384, sha512, sha3-256, sha3-384 and sha3-512 are known";
}

bool is_digits(const std::string& text) {
    return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

// X.660: without leading zeros; the library has numbers of 32 bits.
bool is_arc(const std::string& text) {
    return is_digits(text) && (text == "0" || text[0] != '0') &&
           (text.size() < 10 || (text.size() == 10 && text < "4294967295"));
}

std::string check_policy(const std::string& policy) {
    std::istringstream arcs(policy + ".");
    int count = 0;
    bool good = true;
    for (std::string arc; std::getline(arcs, arc, '.'); ++count) {
        good = good && is_arc(arc) && (count > 0 || arc == "0" || arc == "1" || arc == "2");
    }
    return good && count > 1 ? "" : policy + " is no object identifier in dotted text";
}

std::string check_accuracy(const std::string& text) {
    const std::size_t point = std::min(text.find('.'), text.size());
    const std::string seconds = text.substr(0, point);
    const std::string fraction = point < text.size() ? text.substr(point + 1) : "0";
    const bool good =
        is_digits(seconds) && seconds.size() <= 9 && is_digits(fraction) && fraction.size() <= 6;
    const bool zero = text.find_first_not_of("0.") == std::string::npos;
    return good && !zero ? "" : text + " is no number of seconds above 0, with six places";
}

Quillmark::PKI::TSP::CAccuracy accuracy_of(const std::string& text) {
    const std::size_t point = std::min(text.find('.'), text.size());
    std::string fraction = text.substr(std::min(point + 1, text.size()));
    fraction.resize(6, '0');
    const auto number = [](const std::string& digits) {
        return static_cast<std::uint32_t>(std::stoul(digits));
    };
    return {number(text.substr(0, point)), number(fraction.substr(0, 3)), number(fraction.substr(3))};
}

struct Texts {
    std::string accuracy;
    std::vector<std::string> hashes = {"sha256", "sha384", "sha512"};
    std::string signature_hash;
};

void describe(CLI::App& app, Options& options, Texts& texts) {
    app.add_option("--key", options.key,
                   "Private key: a file, or another name that the service opens (engine:..., pkcs11:...)")
        ->required();
    app.add_option("--password-file", options.password_file,
                   "File with the password or PIN of the key, in its first line");
    app.add_option("--certificate", options.certificate, "Certificate of the key, PEM or DER")->required();
    app.add_option(
        "--chain", options.chain,
        "Further certificates to send to those who ask for certificates, PEM or DER; may be repeated");
    app.add_option("--policy", options.terms.policies,
                   "Policy to stamp under, an object identifier; may be repeated, the first is for requests "
                   "without one")
        ->required()
        ->check(check_policy);
    app.add_option("--accuracy", texts.accuracy,
                   "How far the time of a stamp may be off, in seconds, as 0.5; left out when not given")
        ->check(check_accuracy);
    app.add_option("--hash", texts.hashes, "Hash to stamp; may be repeated (default: sha256 sha384 sha512)")
        ->check(check_hash);
    app.add_option("--signature-hash", texts.signature_hash,
                   "Hash of the signature (default: sha256, or the one that the key is bound to)")
        ->check(check_hash);
    app.add_flag("--ordering", options.ordering, "Promise that stamps are ordered by their times alone");
    app.add_flag("--tsa-name", options.tsa_name, "Put the subject of the certificate into each stamp");
    app.add_option("--address", options.address, "Address to listen on")->capture_default_str();
    app.add_option("--port", options.port, "Port to listen on; 0 is any free one")->capture_default_str();
    app.add_option("--threads", options.threads, "How many requests are answered at once")
        ->capture_default_str()
        ->check(CLI::Range(1, 1000));
    app.add_option("--serials", options.serials, "File of the serial numbers; made when there is none")
        ->required();
    app.add_option("--max-request", options.max_request, "Size of the largest request taken, in octets")
        ->capture_default_str()
        ->check(CLI::Range(1, 1 << 30));
}

}  // namespace

std::optional<Options> read_options(const std::vector<std::string>& arguments) {
    Options options;
    Texts texts;
    CLI::App app("An HTTP time-stamp authority (RFC 3161, and the Authenticode exchange).", "authority");
    describe(app, options, texts);
    try {
        app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
    } catch (const CLI::CallForHelp&) {
        std::fputs(app.help().c_str(), stdout);
        return std::nullopt;
    } catch (const CLI::ParseError& error) {
        throw Failure(error.what());
    }
    for (const std::string& name : texts.hashes) {
        options.terms.hashes.push_back(hash_of_name(name));
    }
    if (!texts.signature_hash.empty()) {
        options.signature_hash = hash_of_name(texts.signature_hash);
    }
    if (!texts.accuracy.empty()) {
        options.accuracy = accuracy_of(texts.accuracy);
    }
    return options;
}

}  // namespace authority
