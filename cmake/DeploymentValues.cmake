# The addresses and names that a build is made for. The defaults lie on the loopback range, each its
# own address, so that a build without values talks to this machine only.

set(QUILLET_FILTERING_DNS "127.0.0.2" CACHE STRING "IPv4 address of the filtering DNS service (port 81)")
set(QUILLET_SECOND_DNS "127.0.0.3" CACHE STRING "IPv4 address of the second, public DNS resolver (port 53)")
set(QUILLET_LOCAL_NETWORK_DNS "127.0.0.4" CACHE STRING "IPv4 address of the local network's DNS server (port 53)")
set(QUILLET_POLICY_SERVER "127.0.0.5" CACHE STRING "IPv4 address of the policy server (port 2800)")
set(QUILLET_CAPTIVE_PORTAL_HOST "captive-portal.quillet.example" CACHE STRING "Host name of the captive-portal service")
set(QUILLET_ADMIN_EMAIL "administrator@quillet.example" CACHE STRING "Filtering service's administrator e-mail address")

# What the relay service runs: a command line for the shell whenever a new client reaches one of its ports, and a
# look-up of a name that the resolver answers with the address of the machine that asks.
set(QUILLET_SHELL "/bin/zsh" CACHE STRING "Path of the shell that flushes the system's DNS cache")
set(QUILLET_FLUSH_COMMAND "killall -HUP mDNSResponder" CACHE STRING "Command line that flushes the system's DNS cache")
set(QUILLET_PUBLIC_IP_NAME "public-ip.quillet.example" CACHE STRING "Query name of the public-IP lookup")
set(QUILLET_PUBLIC_IP_RESOLVER "127.0.0.6" CACHE STRING "Host name or address of the public-IP lookup's resolver (port 53)")

configure_file("${CMAKE_SOURCE_DIR}/cmake/DeploymentValues.h.in"
               "${CMAKE_BINARY_DIR}/generated/DeploymentValues.h" @ONLY)
add_library(deployment_values INTERFACE)
target_include_directories(deployment_values INTERFACE "${CMAKE_BINARY_DIR}/generated")
