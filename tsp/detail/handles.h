#pragma once

// Owners of platform handles.

#include "platform/cryptoapi.h"

namespace ATL2 {

/// Closes its message, if any.
class CCryptMsg {
  public:
    explicit CCryptMsg(HCRYPTMSG message) : message_(message) {}
    ~CCryptMsg() {
        if (message_ != nullptr) {
            CryptMsgClose(message_);
            message_ = nullptr;
        }
    }
    CCryptMsg(const CCryptMsg&) = delete;
    CCryptMsg& operator=(const CCryptMsg&) = delete;

    HCRYPTMSG get() const { return message_; }
    /// Takes a message over; there is none yet.
    void attach(HCRYPTMSG message) { message_ = message; }
    /// Gives the message up to the caller.
    HCRYPTMSG detach() {
        HCRYPTMSG message = message_;
        message_ = nullptr;
        return message;
    }

  private:
    HCRYPTMSG message_;
};

/// Frees its certificate context, if any.
class CCertContext {
  public:
    explicit CCertContext(PCCERT_CONTEXT context) : context_(context) {}
    ~CCertContext() {
        if (context_ != nullptr) {
            CertFreeCertificateContext(context_);
            context_ = nullptr;
        }
    }
    CCertContext(const CCertContext&) = delete;
    CCertContext& operator=(const CCertContext&) = delete;

    PCCERT_CONTEXT get() const { return context_; }

  private:
    PCCERT_CONTEXT context_;
};

}  // namespace ATL2
