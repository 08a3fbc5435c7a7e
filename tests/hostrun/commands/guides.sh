#!/usr/bin/env bash
# tests/hostrun/commands/guides.sh HOSTRUN - the manual page and the shells' completions know every command and every option
# that the help knows, and complete in each shell that is installed.
set -uo pipefail
hostrun=$(realpath "$1")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work" || exit 1
failures=0
fail() {
  echo "FAILED: $*"
  failures=$((failures + 1))
}

"$hostrun" manual >hostrun.1 || fail "the manual page is written"
for shell in bash zsh fish; do "$hostrun" completion $shell >hostrun.$shell || fail "what $shell reads is written"; done

commands=$("$hostrun" --help | awk '/^Commands/ { inside = 1; next } /^$/ { inside = 0 } inside { print $1 }')
[ "$(wc -w <<<"$commands")" -ge 8 ] || fail "the help lists the commands, found $commands"
# options COMMAND: those that its help lists.
options() { "$hostrun" help "$@" | sed -nE 's/^  (-[^ ]*).*/\1/p' | tr ',' '\n'; }
# part COMMAND: what the manual page says of that command; without one, of hostrun itself. The options of the host stand
# there once.
part() {
  tr -d '\\' <hostrun.1 | awk -v command="fBhostrun $1fR" '
    /^\.S[SH]/ { inside = /^\.SS/ ? index($0, command) : /OPTIONS OF THE HOST/ || (command == "fBhostrun fR" && /OPTIONS/) }
    inside'
}
# bash_words WORD...: what bash completes when hostrun and these words have been typed.
bash_words() {
  # shellcheck disable=SC2016 # expanded inside
  bash -c 'source ./hostrun.bash; compopt() { echo "compopt $*"; }
    COMP_WORDS=("$@") COMP_CWORD=$(($# - 1)); _hostrun; printf "%s\n" "${COMPREPLY[@]}"' bash hostrun "$@"
}
# The same for each line of words that is read, in one bash: each completion behind its words and a bar.
bash_completions() {
  # shellcheck disable=SC2016 # expanded inside
  bash -c 'source ./hostrun.bash; compopt() { :; }
    while read -r -a words; do
      COMP_WORDS=(hostrun "${words[@]}") COMP_CWORD=${#words[@]} COMPREPLY=(); _hostrun
      for reply in "${COMPREPLY[@]}"; do printf "%s|%s\n" "${words[*]}" "$reply"; done
    done'
}
# A text and a part of it, a line with its end or only a piece: no process for each of hundreds.
has() { [[ $'\n'$1$'\n' == *"$2"* ]] || fail "$3"; }
declare -A options_of
typed=
for command in '' $commands; do
  # shellcheck disable=SC2086 # no word for hostrun itself
  options_of[/$command]=$(options $command)
  for option in ${options_of[/$command]}; do typed+="$command $option"$'\n'; done
  typed+="$command"$'\n'
done
completed=$(bash_completions <<<"$typed")
zsh_file=$(<hostrun.zsh)
fish_file=$(<hostrun.fish)
for command in '' $commands; do
  of="of \"hostrun${command:+ $command}\""
  manual=$(part "$command")
  zsh=$(sed -n "/^    ${command:-\*})/,/;;/p" hostrun.zsh)
  fish=$(grep -E "from ${command:-help .*}'" hostrun.fish)
  for option in ${options_of[/$command]}; do
    has "$manual" "fB${option}fR" "the manual page has $option $of"
    has "$completed" $'\n'"${command:+$command }$option|$option"$'\n' "bash completes $option $of"
    has "$zsh" "'*${option}[" "zsh knows $option $of"
    case $option in
      --*) has "$fish" " -l ${option#--} " "fish knows $option $of" ;;
      *) has "$fish" " -s ${option#-} " "fish knows $option $of" ;;
    esac
  done
  [ -z "$command" ] && continue
  has "$completed" $'\n'"$command|$command"$'\n' "bash completes $command"
  has "$zsh_file" $'\n'"    '$command:" "zsh knows $command"
  has "$fish_file" "first_token -a $command -d" "fish knows $command"
done

if command -v groff >/dev/null; then
  said=$(groff -man -Tutf8 -ww hostrun.1 2>&1 >page)
  [ -z "$said" ] || fail "groff has nothing to say about the manual page: $said"
  grep -q 'hostrun - runs programs' page || fail "groff shows the manual page"
else
  echo "without groff the manual page is not set"
fi

in_bash() { bash_words "$@" | paste -sd' '; }
touch swan.bas
wants() { [ "$2" = "$3" ] || fail "$1: wanted \"$2\", found \"$3\""; }
wants 'bash: a command, or a file' 'compopt -o filenames swatches swan.bas' "$(in_bash sw)"
wants 'bash: a command to explain' 'trace' "$(in_bash help tr)"
wants 'bash: a shell' 'bash zsh fish' "$(in_bash completion '')"
wants 'bash: an option' '--only-failed' "$(in_bash check --on)"
wants 'bash: files behind an option that takes one' '' "$(in_bash check --bundle '')"
wants 'bash: nothing behind an option that takes a text' 'compopt +o default ' "$(in_bash check --filter '')"
if command -v fish >/dev/null; then
  in_fish() { HOME=$work fish --no-config -c 'source hostrun.fish; complete -C $argv[1]' "$1" | cut -f1 | paste -sd' '; }
  wants 'fish: a command, or a file' 'swan.bas swatches' "$(in_fish 'hostrun sw')"
  wants 'fish: a command to explain' 'trace' "$(in_fish 'hostrun help tr')"
  wants 'fish: a shell' 'bash fish zsh' "$(in_fish 'hostrun completion ')"
  wants 'fish: an option' '--only-failed' "$(in_fish 'hostrun check --on')"
  wants 'fish: files behind an option that takes one' 'swan.bas' "$(in_fish 'hostrun check --bundle swa')"
  wants 'fish: nothing behind an option that takes a text' '' "$(in_fish 'hostrun check --filter swa')"
else
  echo "without fish its completion is not tried"
fi
if command -v zsh >/dev/null; then
  # At a terminal of its own: completes a line and prints what it became.
  cat >ask.zsh <<'END'
zmodload zsh/zpty
zpty shell "HOME=$PWD PS1= zsh -f -i"
zpty -w shell "autoload -Uz compinit; compinit -u -d $PWD/dump; PS1=; source ./hostrun.zsh; bindkey '^T' complete-word"
zpty -w shell 'mark=$'"'\\x02'"'; show() { print -r -- $mark$BUFFER$mark; BUFFER=; zle accept-line }; zle -N show; bindkey "^X" show'
zpty -w -n shell "$1"$'\t\x18'
zpty -r -m shell line $'*\x02*\x02*'
print -r -- ${${line#*$'\x02'}%%$'\x02'*}
zpty -d shell
END
  in_zsh() { zsh -f ask.zsh "$1"; }
  wants 'zsh: a command to explain' 'hostrun help trace ' "$(in_zsh 'hostrun help tr')"
  wants 'zsh: a shell' 'hostrun completion fish ' "$(in_zsh 'hostrun completion fi')"
  wants 'zsh: an option' 'hostrun check --only-failed ' "$(in_zsh 'hostrun check --on')"
  wants 'zsh: files behind an option that takes one' 'hostrun check --bundle swan.bas ' "$(in_zsh 'hostrun check --bundle swa')"
else
  echo "without zsh its completion is not tried"
fi

said=$("$hostrun" completion tcsh 2>&1)
wants 'another shell is refused' '2 hostrun completion: shell: tcsh not in {bash,zsh,fish}; hostrun completion --help says more' "$? $said"
[ $failures = 0 ]
