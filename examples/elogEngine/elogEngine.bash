# bash completion for elogEngine
complete -W '--help --json --version' elogEngine
