# bash completion for flinspect

_flinspect()
{
  local word=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} command=${COMP_WORDS[1]}
  local commands="tree check dump extract diff events json copy" options="--help --open-forms"
  COMPREPLY=()
  case $previous in
    --color) COMPREPLY=($(compgen -W "auto always never" -- "$word")) && return ;;
    -d | --directory) compopt -o filenames && COMPREPLY=($(compgen -d -- "$word")) && return ;;
  esac
  case $command in
    check) options+=" --strict" ;;
    extract) options+=" --directory" ;;
    dump | diff | events | json | copy) ;;
    *) options+=" --color --version" ;;
  esac
  if [[ $word == -* ]]; then
    COMPREPLY=($(compgen -W "$options" -- "$word"))
    return
  fi
  local IFS=$'\n'
  compopt -o filenames
  COMPREPLY=($(compgen -f -- "$word"))
  if ((COMP_CWORD == 1)); then
    COMPREPLY+=($(IFS=' ' compgen -W "$commands" -- "$word"))
  fi
}

complete -F _flinspect flinspect
