#include "devkit/report_server/certificate.h"

#include <openssl/rand.h>
#include <openssl/x509v3.h>

#include <cstdint>

namespace ostrell {
namespace {

constexpr long kDay = 24L * 60 * 60;

struct ExtensionTraits {
  using Handle = X509_EXTENSION*;
  static Handle Empty() { return nullptr; }
  static void Close(Handle extension) noexcept { X509_EXTENSION_free(extension); }
};

bool AddExtension(X509* certificate, int nid, const char* value) {
  const Owner<ExtensionTraits> extension(X509V3_EXT_conf_nid(nullptr, nullptr, nid, value));
  return extension && X509_add_ext(certificate, extension.Get(), -1) == 1;
}

bool SetName(X509* certificate) {
  X509_NAME* name = X509_get_subject_name(certificate);
  const auto* text = reinterpret_cast<const unsigned char*>("Ostrell local report server");
  return X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC, text, -1, -1, 0) == 1 &&
         X509_set_issuer_name(certificate, name) == 1;
}

// Two runs have different serial numbers, so that no client mixes up their certificates.
bool SetSerialNumber(X509* certificate) {
  uint32_t serial = 0;
  return RAND_bytes(reinterpret_cast<unsigned char*>(&serial), sizeof serial) == 1 &&
         ASN1_INTEGER_set_uint64(X509_get_serialNumber(certificate), uint64_t{serial} + 1) == 1;
}

bool SetValidity(X509* certificate) {
  return X509_gmtime_adj(X509_getm_notBefore(certificate), -kDay) != nullptr &&
         X509_gmtime_adj(X509_getm_notAfter(certificate), 365 * kDay) != nullptr;
}

bool FillAndSign(X509* certificate, EVP_PKEY* key) {
  constexpr long kVersion3 = 2;
  return X509_set_version(certificate, kVersion3) == 1 && SetSerialNumber(certificate) &&
         SetValidity(certificate) && SetName(certificate) &&
         AddExtension(certificate, NID_basic_constraints, "critical,CA:TRUE") &&
         AddExtension(certificate, NID_subject_alt_name, "IP:127.0.0.1") &&
         X509_set_pubkey(certificate, key) == 1 && X509_sign(certificate, key, EVP_sha256()) != 0;
}

}  // namespace

Certificate MakeLoopbackCertificate() {
  Certificate made{X509Owner(X509_new()), PrivateKeyOwner(EVP_EC_gen("P-256"))};
  if (!made.certificate || !made.key || !FillAndSign(made.certificate.Get(), made.key.Get())) {
    return {};
  }
  return made;
}

}  // namespace ostrell
