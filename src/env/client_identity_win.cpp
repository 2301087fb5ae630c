#include "env/client_id_win.h"
#include "machine/machine_identity_win.h"

namespace ostrell {

int32_t ComputeIdentity(IdentityText& machineIdentity, IdentityText& clientId) {
  machineIdentity = IdentityText(ComputeMachineIdentity({}));
  clientId = ReadOrMakeClientId();
  return 0;
}

}  // namespace ostrell
