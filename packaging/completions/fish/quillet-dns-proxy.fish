complete -c quillet-dns-proxy -f
complete -c quillet-dns-proxy -l listen -x -d "Serve this address (ADDR:PORT)"
complete -c quillet-dns-proxy -l vendor-data -r -F -d "Read the settings from this file"
complete -c quillet-dns-proxy -l defaults-dir -x -a "(__fish_complete_directories)" -d "Keep the user defaults in this folder"
complete -c quillet-dns-proxy -l source-app -x -d "Identifier of applications that are not known"
complete -c quillet-dns-proxy -l identify -x -a "off cgroup process" -d "How the application is found"
complete -c quillet-dns-proxy -l safe-search -d "Send every query unchanged to the filtering service"
complete -c quillet-dns-proxy -s h -l help -d "Print the options"
complete -c quillet-dns-proxy -l version -d "Print the version"
