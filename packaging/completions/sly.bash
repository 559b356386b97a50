# Completes the commands, options and files of sly in bash.

_sly() {
  local cur prev words cword split
  _init_completion -s || return
  case $prev in
    --output | -o) _filedir -d && return ;;
    --password-file | --passphrase-file) _filedir && return ;;
    --size | -s | --count | -n | --file | -f) return ;;
  esac
  $split && return

  if ((cword == 1)); then
    COMPREPLY=($(compgen -W 'split join verify hide list recover --help --version' -- "$cur"))
    return
  fi
  if [[ $cur != -* ]]; then
    [[ ${words[1]} == @(join|verify) ]] && _filedir sly || _filedir
    return
  fi
  local options='--yes -y --force --quiet -q --verbose -v --help -h'
  case ${words[1]} in
    split) options+=' --output -o --size -s --count -n --checksum' ;;
    join) options+=' --output -o --delete' ;;
    hide) options+=' --output -o --encrypt -e --password-file --passphrase-file' ;;
    list) options+=' --password-file' ;;
    recover)
      options+=' --output -o --password-file --passphrase-file --file -f --all -a --main -m --raw -r'
      ;;
  esac
  COMPREPLY=($(compgen -W "$options" -- "$cur"))
} && complete -F _sly sly
