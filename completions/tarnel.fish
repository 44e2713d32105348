# Completion of tarnel's command line for fish.
complete -c tarnel -a '(tarnel complete (commandline -opc)[2..] (commandline -ct) 2>/dev/null)'
