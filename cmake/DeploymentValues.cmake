# The addresses and names that a build is made for. The defaults lie on the loopback range, each its
# own address, so that a build without values talks to this machine only.

set(QUILLET_FILTERING_DNS "127.0.0.2" CACHE STRING "IPv4 address of the filtering DNS service (port 81)")
set(QUILLET_SECOND_DNS "127.0.0.3" CACHE STRING "IPv4 address of the second, public DNS resolver (port 53)")
set(QUILLET_LOCAL_NETWORK_DNS "127.0.0.4" CACHE STRING "IPv4 address of the local network's DNS server (port 53)")
set(QUILLET_POLICY_SERVER "127.0.0.5" CACHE STRING "IPv4 address of the policy server (port 2800)")
set(QUILLET_CAPTIVE_PORTAL_HOST "captive-portal.quillet.example" CACHE STRING "Host name of the captive-portal service")
set(QUILLET_ADMIN_EMAIL "administrator@quillet.example" CACHE STRING "Filtering service's administrator e-mail address")

configure_file("${CMAKE_SOURCE_DIR}/cmake/DeploymentValues.h.in"
               "${CMAKE_BINARY_DIR}/generated/DeploymentValues.h" @ONLY)
add_library(deployment_values INTERFACE)
target_include_directories(deployment_values INTERFACE "${CMAKE_BINARY_DIR}/generated")
