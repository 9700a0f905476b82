// Prints what is in requests, responses, tokens, Authenticode requests and stamps, certificates and
// revocation lists.
//
//     inspect [--json] FILE...
//
// What a file is, is told by its bytes: DER, BER, or PEM with any number of blocks; "-" is standard input.
// Messages of other kinds are named by their outer type. With --json there is one object a file, each on a
// line of its own: "file", "kind", "size", "decoded" with what was found, and "faults" with what could not be
// read; of a PEM file with several blocks these stand for each block in "blocks". A fault is also a line on
// standard error, with the place of the element where decoding stopped, counted in octets from the first (in
// a PEM block, from the first that the block encodes). The exit status is then 1, and the other files are
// printed all the same.
//
// All of it is done through the installed interface: the classes of the library, the platform's message and
// certificate functions, and for what neither tells (kinds, places, revocation lists) the elements
// themselves.

#include <iostream>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "inspect/describe.h"
#include "inspect/input.h"
#include "inspect/kind.h"
#include "inspect/text.h"
#include "runtime/context.h"
#include "support/failure.h"

namespace {

using namespace inspect;
using Quillmark::CBlob;

struct Options {
    bool json = false;
    std::vector<std::string> files;
};

void describe(Kind kind, const Octets& octets, Report& report) {
    switch (kind) {
        case Kind::kRequest:
            return describe_request(octets, report);
        case Kind::kResponse:
            return describe_response(octets, report);
        case Kind::kToken:
            return describe_token(octets, report);
        case Kind::kAuthenticodeRequest:
            return describe_authenticode_request(octets, report);
        case Kind::kStamp:
            return describe_stamp(octets, report);
        case Kind::kSignedData:
            return describe_signed_message(octets, report);
        case Kind::kCertificate:
            return describe_certificate(octets, report);
        case Kind::kRevocationList:
            return describe_revocation_list(octets, report);
        case Kind::kOther:
            return describe_other(octets, report);
    }
}

void describe_trailing(const Octets& octets, Report& report) {
    const std::size_t message = Elements(octets).next().whole.size;
    if (message < octets.size) {
        report.found.fact("Behind the message", "trailing", octets.size - message,
                          std::to_string(octets.size - message) + " octets");
    }
}

// What is left to be thrown tells of no place.
void describe_safely(Kind kind, const Octets& octets, Report& report) {
    try {
        describe(kind, octets, report);
        if (report.faults.empty()) {
            describe_trailing(octets, report);
        }
    } catch (const Malformed& malformed) {
        report.faults.push_back({report.title, malformed.offset(), malformed.what(), ""});
    } catch (const CAtlException& exception) {
        report.faults.push_back({report.title, std::nullopt, "a part is refused", result_name(exception)});
    } catch (const ASN1RTLException& exception) {
        report.faults.push_back({report.title, std::nullopt,
                                 "the codec failed with status " + std::to_string(exception.getStatus()),
                                 ""});
    } catch (const example::Failure& failure) {
        report.faults.push_back({report.title, std::nullopt, failure.what(), ""});
    }
}

bool is_whole(const Octets& octets) {
    try {
        check_nesting(octets);
        return true;
    } catch (const Malformed&) {
        return false;
    }
}

Report inspect_octets(const CBlob& contents) {
    Report report;
    report.size = contents.cbData();
    const Octets octets = octets_of(contents);
    if (octets.size != 0 && is_text(contents) && !is_whole(octets)) {
        report.kind = report.title = "text";
        report.found.fact("", "type", "text", "");
        return report;
    }
    const Recognised recognised = recognise(octets);
    report.kind = recognised.word;
    report.title = recognised.title;
    describe_safely(recognised.kind, octets, report);
    return report;
}

Report inspect_block(const PemBlock& block) {
    Report report;
    if (block.encrypted) {
        report.kind = "encrypted";
        report.title = "encrypted PEM block";
        report.size = block.contents.cbData();
        report.found.fact("", "type", report.title, "");
    } else {
        report = inspect_octets(block.contents);
    }
    report.label = block.label;
    return report;
}

Report inspect_pem(const CBlob& contents) {
    Report report;
    report.kind = "pem";
    report.title = "PEM";
    report.size = contents.cbData();
    try {
        for (const PemBlock& block : read_pem(contents)) {
            report.blocks.push_back(inspect_block(block));
        }
    } catch (const Malformed& malformed) {
        report.faults.push_back({report.title, malformed.offset(), malformed.what(), ""});
        return report;
    }
    return report.blocks.size() == 1 ? std::move(report.blocks.front()) : std::move(report);
}

Report inspect_file(const std::string& file) {
    try {
        const CBlob contents = read_input(file);
        return is_pem(contents) ? inspect_pem(contents) : inspect_octets(contents);
    } catch (const example::Failure& failure) {
        Report report;
        report.kind = "unreadable";
        report.title = "file";
        report.faults.push_back({report.title, std::nullopt, failure.what(), ""});
        return report;
    }
}

void print(const std::string& name, const Report& report) {
    for (const Report& block : report.blocks) {
        print(name, block);
    }
    if (report.blocks.empty() && (report.faults.empty() || !report.found.empty())) {
        std::cout << printable(name) << ": " << printable(report.title) << ", " << report.size << " octets"
                  << (report.label.empty() ? "" : ", PEM " + printable(report.label)) << '\n';
        report.found.print(std::cout);
    }
}

void print_json(const std::string& name, const Report& report) {
    Json object;
    object["file"] = name;
    object.update(report.json());
    // ASCII alone, so that no character of the file reaches the terminal; octets that are no UTF-8 are
    // replaced.
    std::cout << object.dump(-1, ' ', true, Json::error_handler_t::replace) << '\n';
}

std::string fault_text(const Fault& fault) {
    if (!fault.offset && fault.code.empty()) {
        return fault.reason;
    }
    const std::string place = fault.offset ? " at offset " + std::to_string(*fault.offset) : "";
    const std::string code = fault.code.empty() ? "" : " (" + fault.code + ")";
    return fault.what + " refused" + place + ": " + fault.reason + code;
}

// Whether there was none.
bool print_faults(const std::string& name, const Report& report) {
    bool none = report.faults.empty();
    for (const Report& block : report.blocks) {
        none = print_faults(name, block) && none;
    }
    for (const Fault& fault : report.faults) {
        std::cerr << "inspect: " << printable(name) << ": " << printable(fault_text(fault)) << '\n';
    }
    return none;
}

int inspect_files(const Options& options) {
    bool all_read = true;
    for (const std::string& file : options.files) {
        const std::string name = file == "-" ? "standard input" : file;
        const Report report = inspect_file(file);
        options.json ? print_json(file, report) : print(name, report);
        std::cout.flush();
        all_read = print_faults(name, report) && all_read;
    }
    if (!std::cout) {
        throw example::Failure("writing to standard output");
    }
    return all_read ? 0 : 1;
}

int inspect_main(const std::vector<std::string>& arguments) {
    Options options;
    CLI::App app("Prints what is in time-stamp messages, certificates and revocation lists.", "inspect");
    app.add_flag("--json", options.json, "One JSON object a file, each on a line of its own");
    app.add_option("FILE", options.files, "DER, BER or PEM; - is standard input")->required();
    try {
        app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
    } catch (const CLI::CallForHelp&) {
        std::cout << app.help();
        return 0;
    } catch (const CLI::ParseError& error) {
        throw example::Failure(error.what());
    }
    return inspect_files(options);
}

}  // namespace

int main(int argc, char** argv) {
    return example::run(argc, argv, inspect_main);
}
