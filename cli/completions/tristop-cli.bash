# SPDX-License-Identifier: GPL-3.0-or-later
# Completion of tristop-cli for bash.

_tristop_cli() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} values='' kind=file
  COMPREPLY=()
  case $previous in
  --style) values='original art bw' ;;
  --tiff-compression) values='none lzw packbits deflate' ;;
  --png-level) values='0 1 2 3 4 5 6 7 8 9' ;;
  --ghost) values='0 1 2 3 4 5 6 7 8 9 10' ;;
  --tone-length | --brightness | --tone-saturation | --contrast | --saturation | --jpeg-quality) return ;;
  --report) kind=directory ;;
  *)
    if [[ $current == -* ]]; then
      values='--help --version --output --tone-length --brightness --tone-saturation --ghost --contrast
        --saturation --style --jpeg-quality --tiff-compression --png-level --no-metadata --no-gps --keep-width
        --report --json --quiet'
    fi
    ;;
  esac
  if [[ -n $values ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$values" -- "$current")
  else
    compopt -o filenames
    mapfile -t COMPREPLY < <(compgen -A "$kind" -- "$current")
  fi
}

complete -F _tristop_cli tristop-cli
