complete -c quillet-relay -f
complete -c quillet-relay -l shell -r -F -d "Run the flush command with this shell"
complete -c quillet-relay -l flush-command -x -d "Flush the DNS cache with this command line"
complete -c quillet-relay -l public-ip-name -x -d "The name that gives the public address"
complete -c quillet-relay -l public-ip-resolver -x -a "(__fish_print_hostnames)" -d "The resolver that knows that name"
complete -c quillet-relay -l log -x -a "full brief" -d "What is logged"
complete -c quillet-relay -s h -l help -d "Print the options"
complete -c quillet-relay -l version -d "Print the version"
