# Prints how bash completes a word of a command line, a completion a line.
# Usage: bash complete.bash "VEXACharger WORD..." INDEX
#   VEXA_COMPLETION  the completion's file (default: the installed one)
source /usr/share/bash-completion/bash_completion
if [[ -n ${VEXA_COMPLETION:-} ]]; then
    source "$VEXA_COMPLETION"
else
    _completion_loader VEXACharger
fi
COMP_LINE=$1
COMP_POINT=${#1}
COMP_TYPE=9
COMP_KEY=9
read -ra COMP_WORDS <<<"$1"
COMP_CWORD=$2
[[ ${#COMP_WORDS[@]} -gt $COMP_CWORD ]] || COMP_WORDS+=("")
_vexacharger
printf '%s\n' "${COMPREPLY[@]}"
