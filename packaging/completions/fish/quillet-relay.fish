complete -c quillet-relay -f
complete -c quillet-relay -s h -l help -d "Print the options"
complete -c quillet-relay -l version -d "Print the version"
