#pragma once

#include <openssl/evp.h>
#include <openssl/x509.h>

#include "base/owner.h"

namespace ostrell {

struct X509Traits {
  using Handle = X509*;
  static Handle Empty() { return nullptr; }
  static void Close(Handle certificate) noexcept { X509_free(certificate); }
};
using X509Owner = Owner<X509Traits>;

struct PrivateKeyTraits {
  using Handle = EVP_PKEY*;
  static Handle Empty() { return nullptr; }
  static void Close(Handle key) noexcept { EVP_PKEY_free(key); }
};
using PrivateKeyOwner = Owner<PrivateKeyTraits>;

// A TLS server's identity that lives in memory only.
struct Certificate {
  X509Owner certificate;
  PrivateKeyOwner key;
};

// A fresh key (P-256) and a certificate for 127.0.0.1 that the key itself signs, valid for a year.
// Both are empty when OpenSSL fails.
Certificate MakeLoopbackCertificate();

}  // namespace ostrell
