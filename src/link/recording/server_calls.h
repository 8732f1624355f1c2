// Calls of a server whose operation is known only when the program runs.
#pragma once

#include "link/seam/uniform_server.h"

namespace ruvo {

/// Calls the operation. There are as many inputs and outputs as it has.
EComResult CallOperation(IP32ls& server, EOperation operation, CUniformServer::Inputs inputs,
                         CUniformServer::Outputs outputs, Variant& status);

} // namespace ruvo
