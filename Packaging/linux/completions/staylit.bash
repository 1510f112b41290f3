# Completion of staylit's options in bash.
_staylit() {
  COMPREPLY=($(compgen -W '--choose-apps --diagnose --pause --settings' -- "${COMP_WORDS[COMP_CWORD]}"))
}
complete -F _staylit staylit
