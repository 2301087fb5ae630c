#include "platform/closed_library.h"
#include "platform/svclink.h"

namespace ostrell {

const Svclink& Svclink::Loaded() {
  static const Svclink svclink = [] {
    const ClosedLibrary library(L"svclink.dll");
    return Svclink({.queryKind = library.ByOrdinal<decltype(SvclinkEntries::queryKind)>(2),
                    .createObject = library.ByOrdinal<decltype(SvclinkEntries::createObject)>(10),
                    .takeRecord = library.ByOrdinal<decltype(SvclinkEntries::takeRecord)>(30)});
  }();
  return svclink;
}

}  // namespace ostrell
