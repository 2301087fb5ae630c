#pragma once

#include <jansson.h>

#include <cstdint>

#include "base/owner.h"

namespace ostrell {

struct SvclinkObject;  // svclink.h

// The product's policy database library, "policydb.dll". Its objects are tables of virtual
// functions in slot order. They have no virtual destructor: compilers give it different numbers of
// slots. Text is UTF-8, zero-terminated and borrowed for the call.

// A section of the product's settings. Ordinal 13.
struct SettingsStore {
  virtual void Release() = 0;                                      // slot 0
  virtual int32_t ReadInt32(const char* key, int32_t* value) = 0;  // slot 1: non-zero if found
  virtual int32_t ReadInt64(const char* key, int64_t* value) = 0;  // slot 2: non-zero if found
  virtual void Reserved3() = 0;                                    // slot 3
  virtual void Reserved4() = 0;                                    // slot 4
  virtual int32_t WriteInt64(const char* key, int64_t value) = 0;  // slot 5: result ignored

 protected:
  ~SettingsStore() = default;
};

// A document of the product, or its record store (document 0). Ordinal 9.
struct PolicyDocument {
  virtual void Reserved0() = 0;                   // slot 0
  virtual void Reserved1() = 0;                   // slot 1
  virtual void Release() = 0;                     // slot 2
  virtual void Reserved3() = 0;                   // slot 3
  virtual json_t* Json() = 0;                     // slot 4: new reference or null
  virtual void Reserved5() = 0;                   // slot 5
  virtual void Reserved6() = 0;                   // slot 6
  virtual json_t* Query(json_t* descriptor) = 0;  // slot 7: new reference or null

 protected:
  ~PolicyDocument() = default;
};

// The files that the product holds in quarantine. Ordinal 10.
struct Quarantine {
  virtual void Release() = 0;    // slot 0
  virtual void Reserved1() = 0;  // slots 1 to 8
  virtual void Reserved2() = 0;
  virtual void Reserved3() = 0;
  virtual void Reserved4() = 0;
  virtual void Reserved5() = 0;
  virtual void Reserved6() = 0;
  virtual void Reserved7() = 0;
  virtual void Reserved8() = 0;
  // Slot 9: writes a held file into the stream; success is assumed::IsYes of the result.
  virtual int32_t Restore(int64_t id, SvclinkObject* stream) = 0;
  virtual void Reserved10() = 0;  // slots 10 to 12
  virtual void Reserved11() = 0;
  virtual void Reserved12() = 0;
  virtual json_t* List() = 0;  // slot 13: array of entries, new reference or null

 protected:
  ~Quarantine() = default;
};

template <class Object>
struct PolicyObjectTraits {
  using Handle = Object*;
  static Handle Empty() { return nullptr; }
  static void Close(Handle object) noexcept { object->Release(); }
};
using SettingsStoreOwner = Owner<PolicyObjectTraits<SettingsStore>>;
using PolicyDocumentOwner = Owner<PolicyObjectTraits<PolicyDocument>>;
using QuarantineOwner = Owner<PolicyObjectTraits<Quarantine>>;

// The library's exports by ordinal; a missing one is null.
struct PolicyDbEntries {
  PolicyDocument* (*openDocument)(int32_t document, const char* dataPath);  // ordinal 9
  Quarantine* (*openQuarantine)();                                          // ordinal 10
  SettingsStore* (*openSettingsStore)(const char* feature);                 // ordinal 13
};

// Each opens an object, or is empty without entry or object.
class PolicyDb {
 public:
  explicit PolicyDb(const PolicyDbEntries& resolved) : entries(resolved) {}

  SettingsStoreOwner OpenSettingsStore(const char* feature) const {
    return SettingsStoreOwner(
        entries.openSettingsStore != nullptr ? entries.openSettingsStore(feature) : nullptr);
  }

  // The document of that number under `dataPath`.
  PolicyDocumentOwner OpenDocument(int32_t document, const char* dataPath) const {
    return PolicyDocumentOwner(
        entries.openDocument != nullptr ? entries.openDocument(document, dataPath) : nullptr);
  }

  QuarantineOwner OpenQuarantine() const {
    return QuarantineOwner(entries.openQuarantine != nullptr ? entries.openQuarantine() : nullptr);
  }

 private:
  PolicyDbEntries entries;
};

}  // namespace ostrell
