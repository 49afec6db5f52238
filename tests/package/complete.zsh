# Ends well once zsh shows a text as it completes a command line, and waits for it for ever.
# Usage: zsh -f complete.zsh "VEXACharger WORD..." TEXT [FOLDER-OF-FUNCTIONS]
zmodload zsh/zpty
zpty -b shell zsh -f -i
zpty -w shell "fpath=($3 \$fpath); autoload -Uz compinit; compinit -u -D"
zpty -w shell "bindkey '^I' list-choices; echo BE\"\"GIN"
zpty -r -m shell output '*BEGIN*'
zpty -w -n shell "$1"$'\t'
zpty -r -m shell output "*$2*"
zpty -d shell
