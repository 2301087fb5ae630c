#include "env/client_identity.h"

namespace ostrell {

IdentityText& MachineIdentity() {
  static IdentityText text;
  return text;
}

IdentityText& ClientId() {
  static IdentityText text;
  return text;
}

}  // namespace ostrell
