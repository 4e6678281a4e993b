// A look at a server with nothing but the network, to tell apart what drivers say in one sentence.
#pragma once

#include <chrono>

#include "doctor/connection_facts.h"
#include "doctor/server_address.h"

namespace doctor {

// Asks for the host's address, opens a connection, and asks a server whose protocol is known whether it offers TLS,
// then hangs up. Takes no longer than `patience`.
[[nodiscard]] ServerLook lookAtServer(const ServerAddress& address, std::chrono::milliseconds patience);

}  // namespace doctor
