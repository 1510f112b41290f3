# Completion of staylit's options in bash.
_staylit() {
  local options='--background --choose-apps --diagnose --doctor --follow --help --holds --json --pause --quit --resume --settings --status --system --toggle-pause --version'
  mapfile -t COMPREPLY < <(compgen -W "$options" -- "${COMP_WORDS[COMP_CWORD]}")
}
complete -F _staylit staylit
