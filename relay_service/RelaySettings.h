#pragma once

#include <string>

namespace QuilletXPCservice {

/// How the system's DNS cache is flushed.
struct CacheFlush {
  /// Path of the shell that runs the command.
  std::string shell;
  /// Its command line; nothing is flushed without text.
  std::string command;
};

/// How the machine's public address is looked up.
struct PublicIpLookup {
  /// A name that its resolver answers with the address of whoever asks.
  std::string name;
  /// Host name or address, port 53.
  std::string resolver;
};

/// What the relay service runs.
struct RelaySettings {
  CacheFlush flush;
  PublicIpLookup lookup;
};

}  // namespace QuilletXPCservice
