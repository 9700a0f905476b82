#pragma once

// OpenSSL's command as the other side of the protocol: client, authority, verifier.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/support/command.h"
#include "tests/support/test_keys.h"

namespace Quillmark::test {

/// A scratch directory with the keys of the `pki` fixture, in which the openssl command runs.
class OpenSSLAuthority {
  public:
    OpenSSLAuthority() {
        std::filesystem::copy(QUILLMARK_TEST_PKI, directory_.path(),
                              std::filesystem::copy_options::recursive);
    }

    /// Runs `command`, which must succeed. Returns what it wrote to its terminal.
    std::string run(const std::string& command) const {
        const CommandResult result = directory_.run(command);
        EXPECT_EQ(result.status, 0) << command << "\n" << result.output;
        return result.output;
    }

    /// A request of the command for `data`; `options` are those of `openssl ts -query`.
    CBlob query(const std::string& options) const {
        run("printf data > data && openssl ts -query -data data " + options + " -out request.tsq");
        return directory_.read("request.tsq");
    }

    /// The answer to `request` by the authority in `section` of `configuration`.
    CBlob reply(const CBlob& request, const std::string& section,
                const std::string& configuration = "tsa.cnf") const {
        directory_.write("request.tsq", request);
        run("openssl ts -reply -config " + configuration + " -section " + section +
            " -queryfile request.tsq -out response.tsr");
        return directory_.read("response.tsr");
    }

    /// What the command takes for the token of `response`.
    CBlob token_of(const CBlob& response) const {
        directory_.write("response.tsr", response);
        run("openssl ts -reply -in response.tsr -token_out -out token.der");
        return directory_.read("token.der");
    }

    const ScratchDirectory& directory() const { return directory_; }

  private:
    ScratchDirectory directory_;
};

}  // namespace Quillmark::test
