complete -c quillet-capture -f
complete -c quillet-capture -n __fish_use_subcommand -a on -d "Queries come to the proxy"
complete -c quillet-capture -n __fish_use_subcommand -a off -d "They do no more"
complete -c quillet-capture -n __fish_use_subcommand -a status -d "Print what is on"
complete -c quillet-capture -n "__fish_seen_subcommand_from on" -l port -x -d "Where the proxy listens"
complete -c quillet-capture -n "__fish_seen_subcommand_from on" -l user -x -a "(__fish_complete_users)" -d "Whose queries pass"
complete -c quillet-capture -n "__fish_seen_subcommand_from on" -l except -x -d "Servers that are asked directly"
complete -c quillet-capture -s h -l help -d "Print commands and options"
