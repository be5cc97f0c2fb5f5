# bash completion for corvane-velk; files follow the words
complete -o default -W 'check match usage lines graph --help --json --number --output --pelm --version' corvane-velk
