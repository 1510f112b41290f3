# Completion of staylit's options in bash.
_staylit() {
  local options='--anonymous --background --choose-apps --diagnose --doctor --follow --help --history --holds --html --json --open --pause --quit --record --replay --resume --ring --set --settings --since --status --system --toggle-pause --until --version'
  if [[ ${COMP_WORDS[COMP_CWORD - 1]} == --@(html|record|replay) && ${COMP_WORDS[COMP_CWORD]} != -* ]]; then
    mapfile -t COMPREPLY < <(compgen -f -- "${COMP_WORDS[COMP_CWORD]}")
    return
  fi
  mapfile -t COMPREPLY < <(compgen -W "$options" -- "${COMP_WORDS[COMP_CWORD]}")
}
complete -F _staylit staylit
