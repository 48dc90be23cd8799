# SPDX-License-Identifier: MIT
# The bash completion of qdsh, less its tables: qdsh_docgen writes the option
# and command tables and _qdsh_value in front of this text (less this header).

# The words that may follow the command line $1 (the last word, when not
# followed by a blank, is the one being completed), one per line.
_qdsh_next_words() {
  local typed=$1 last=""
  local -a words
  read -ra words <<< "$typed"
  if [[ -n $typed && $typed != *[[:space:]] ]]; then
    last=${words[${#words[@]}-1]}
    unset 'words[${#words[@]}-1]'
  fi
  local pattern e i ok
  local -a elems
  local -A seen=()
  for pattern in "${_qdsh_commands[@]}"; do
    read -ra elems <<< "$pattern"
    ok=1
    for ((i = 0; i < ${#words[@]}; i++)); do
      (( i < ${#elems[@]} )) || { ok=0; break; }
      e=${elems[i]}
      [[ $e == *'*' ]] && { ok=2; break; }
      [[ $e == [A-Z]* ]] && continue
      [[ $e == "${words[i]}"* ]] || { ok=0; break; }
    done
    (( ok == 1 && ${#words[@]} < ${#elems[@]} )) || continue
    e=${elems[${#words[@]}]}
    [[ $e == [A-Z]* || $e != "$last"* || -n ${seen[$e]:-} ]] && continue
    seen[$e]=1
    printf '%s\n' "$e"
  done
  [[ -z ${words[*]} && watch == "$last"* && $2 == prompt ]] && printf 'watch\n'
  return 0
}

# Completes the command line $1 typed so far inside one word ($2: the word
# as typed, with its opening quote if any). Inside quotes each reply is the
# whole word; readline would close the quote after a single reply, so a
# single reply is offered twice (with one and two blanks after it), which
# inserts it with one blank and keeps the quote open.
_qdsh_complete_command() {
  local typed=$1 raw=$2 prefix="" word
  local -a replies=()
  if [[ $raw == [\"\']* ]]; then
    [[ $typed == *[[:space:]]* ]] && prefix="${typed%[[:space:]]*} "
    while IFS= read -r word; do
      replies+=("$prefix$word")
    done < <(_qdsh_next_words "$typed" prompt)
    if (( ${#replies[@]} == 1 )); then
      replies=("${replies[0]} " "${replies[0]}  ")
    fi
    COMPREPLY=("${replies[@]}")
    compopt -o nospace 2>/dev/null
  else
    mapfile -t COMPREPLY < <(_qdsh_next_words "$typed" prompt)
  fi
}

# Completes the words of a command given as separate words (after watch's
# options): $1 is the index of its first word.
_qdsh_complete_words() {
  local typed="" i
  for ((i = $1; i < COMP_CWORD; i++)); do typed+="${COMP_WORDS[i]} "; done
  mapfile -t COMPREPLY < <(_qdsh_next_words "$typed$2")
}

_qdsh() {
  local cur=$2 scope=main i w start=0 options flags
  COMPREPLY=()
  if [[ $COMP_CWORD -ge 2 && ${COMP_WORDS[COMP_CWORD-1]} == = ]]; then  # --output=VALUE
    _qdsh_value "${COMP_WORDS[COMP_CWORD-2]}" "$cur"
    return 0
  fi
  # Which part of the line the word is in: qdsh's options, or those of
  # watch or serve, or the words of the watched command.
  for ((i = 1; i < COMP_CWORD; i++)); do
    w=${COMP_WORDS[i]}
    if (( start )); then
      continue
    elif [[ $scope == main && ( $w == watch || $w == serve ) ]]; then
      scope=$w
    elif [[ $w == -* && $w != *=* ]]; then
      options="_qdsh_${scope}_options" flags="_qdsh_${scope}_flags"
      if [[ " ${!options} " == *" $w "* && ${!flags} != *" $w "* ]]; then
        if (( i + 1 == COMP_CWORD )); then
          _qdsh_value "$w" "$cur"
          return 0
        fi
        ((i++))
      fi
    elif [[ $scope == watch ]]; then
      start=$i
    fi
  done
  if (( start )); then
    _qdsh_complete_words "$start" "$cur"
  elif [[ $cur == -* ]]; then
    options="_qdsh_${scope}_options"
    mapfile -t COMPREPLY < <(compgen -W "${!options}" -- "$cur")
  elif [[ $scope == main ]]; then
    mapfile -t COMPREPLY < <(compgen -W "watch serve" -- "$cur")
  elif [[ $scope == watch ]]; then
    _qdsh_complete_words "$COMP_CWORD" "$cur"
  fi
  return 0
}
complete -F _qdsh qdsh
