# Bash completion of db, the maintenance tool of the recorder's stream store.
# Installed as share/bash-completion/completions/db, where bash-completion
# loads it the first time db is completed; it can also be sourced directly,
# as it needs nothing from bash-completion.
#
# Completes the options, long and short, and the letters of the arguments of
# -f (file selection) and -a (analysis). REIDs are not completed: they live in
# the recorder's database, which may belong to a running daemon.

# The options of the usage text; -E, -R and -P are hidden there and offered
# only once an upper-case letter has been typed.
_db_short_options="-h -a -d -e -f -r -p -s -t -u"
_db_hidden_options="-E -R -P"
_db_long_options="--help --usage --analyze --delete --deleteall --events --files --reid
--split --status --tables --un"

# _db_selection_next ARG: the characters that may follow ARG in the argument
# of -f, as one string; empty when ARG cannot be continued. A number pattern
# of digits, ? and * may only open the argument; it is left to be typed, since
# offering every digit would drown the letters.
_db_selection_next() {
  local arg=$1 letters=acfklnrst
  [[ $arg =~ ^[0-9?*]*([acfklnrt]|s[0-3])*s?$ ]] || return 0
  if [[ $arg == *s ]]; then
    printf '%s' 0123
  else
    printf '%s' "$letters"
  fi
}

# _db_analysis_next ARG: the characters that may follow ARG in the argument
# of -a. Once a z has been read its number may follow; everything after the
# number's digits is ignored by db, so nothing is offered there.
_db_analysis_next() {
  local arg=$1
  [[ $arg =~ ^[dsz]*[0-9]*$ ]] || return 0
  if [[ $arg == *z*[0-9] ]]; then
    printf '%s' 0123456789
  elif [[ $arg == *[0-9] ]]; then
    return 0
  elif [[ $arg == *z* ]]; then
    printf '%s' dsz0123456789
  else
    printf '%s' dsz
  fi
}

# _db_argument_of WORD: the language (selection, analysis, reid) of the
# argument that follows WORD, or nothing when WORD takes none. A cluster of
# flags may end in an option that takes the next word, as in -ef.
_db_argument_of() {
  case $1 in
    --files) echo selection ;;
    --analyze) echo analysis ;;
    --delete | --reid) echo reid ;;
    --*) ;;
    *)
      if [[ $1 =~ ^-[heEspPtu]*f$ ]]; then
        echo selection
      elif [[ $1 =~ ^-[heEspPtu]*a$ ]]; then
        echo analysis
      elif [[ $1 =~ ^-[heEspPtu]*[dRr]$ ]]; then
        echo reid
      fi
      ;;
  esac
}

_db() {
  local cur=${COMP_WORDS[COMP_CWORD]} prev="" language="" prefix="" next="" i
  ((COMP_CWORD > 0)) && prev=${COMP_WORDS[COMP_CWORD - 1]}
  COMPREPLY=()

  if [[ $cur == = ]]; then
    # --files=ARG and --analyze=ARG: with '=' among the word breaks (bash's
    # default) the '=' is a word of its own.
    language=$(_db_argument_of "$prev")
    cur=""
  elif [[ $prev == = ]] && ((COMP_CWORD > 1)); then
    language=$(_db_argument_of "${COMP_WORDS[COMP_CWORD - 2]}")
  elif [[ $cur == --*=* ]]; then
    language=$(_db_argument_of "${cur%%=*}")
    prefix=${cur%%=*}=
    cur=${cur#*=}
  elif [[ $cur =~ ^(-[heEspPtu]*[fa])(.+)$ ]]; then
    # -fARG and -aARG: the argument glued to its option.
    language=$(_db_argument_of "${BASH_REMATCH[1]}")
    prefix=${BASH_REMATCH[1]}
    cur=${BASH_REMATCH[2]}
  elif [[ -n $prev ]]; then
    language=$(_db_argument_of "$prev")
  fi

  case $language in
    selection) next=$(_db_selection_next "$cur") ;;
    analysis) next=$(_db_analysis_next "$cur") ;;
    reid) ;;
    *)
      if [[ $cur == -* ]]; then
        # shellcheck disable=SC2207
        COMPREPLY=($(compgen -W "$_db_short_options $_db_long_options" -- "$cur"))
        if ((${#COMPREPLY[@]} == 0)); then
          # shellcheck disable=SC2207
          COMPREPLY=($(compgen -W "$_db_hidden_options" -- "$cur"))
        fi
      fi
      ;;
  esac
  for ((i = 0; i < ${#next}; i++)); do
    COMPREPLY+=("$prefix$cur${next:i:1}")
  done
  # An argument goes on letter by letter: no blank after a completed letter.
  if [[ -n $language ]]; then
    compopt -o nospace 2> /dev/null
  fi
  return 0
}

complete -F _db db
