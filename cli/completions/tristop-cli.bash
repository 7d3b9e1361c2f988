# SPDX-License-Identifier: GPL-3.0-or-later
# Completion of tristop-cli for bash.

_tristop_cli() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} values='' kind=file batch=''
  [[ $COMP_CWORD -gt 1 && ${COMP_WORDS[1]} == batch ]] && batch=yes
  COMPREPLY=()
  case $previous in
  --style) values='original art bw' ;;
  --tiff-compression) values='none lzw packbits deflate' ;;
  --png-level) values='0 1 2 3 4 5 6 7 8 9' ;;
  --ghost) values='0 1 2 3 4 5 6 7 8 9 10' ;;
  --group) values='3' ;;
  --tone-length | --brightness | --tone-saturation | --contrast | --saturation | --jpeg-quality) return ;;
  --name | --gap | --select | --jobs | --memory) return ;;
  --report) kind=directory ;;
  -o | --output) [[ -n $batch ]] && kind=directory ;;
  *)
    if [[ $current == -* ]]; then
      values='--help --output --tone-length --brightness --tone-saturation --ghost --contrast --saturation
        --style --jpeg-quality --tiff-compression --png-level --no-metadata --no-gps --keep-width --quiet'
      if [[ -n $batch ]]; then
        values+=' --name --gap --group --dry-run --plan --run --select --jobs --memory --log --redo'
      else
        values+=' --version --report --json'
      fi
    fi
    ;;
  esac
  if [[ -n $values ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$values" -- "$current")
  else
    compopt -o filenames
    mapfile -t COMPREPLY < <(compgen -A "$kind" -- "$current")
    [[ $COMP_CWORD -eq 1 && batch == "$current"* ]] && COMPREPLY+=(batch)
  fi
}

complete -F _tristop_cli tristop-cli
