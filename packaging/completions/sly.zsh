#compdef sly
# Completes the commands, options and files of sly in zsh.

local -a common output password passphrase commands
common=(
  '(-y --yes)'{-y,--yes}'[answer Yes to questions, unless pieces are damaged or unproven]'
  '--force[answer Yes to every question]'
  '(-q --quiet)'{-q,--quiet}'[show neither progress nor messages of success]'
  '(-v --verbose)'{-v,--verbose}'[print the path of every file made]'
  '(- *)'{-h,--help}'[print the options]'
)
output=('(-o --output)'{-o,--output}'[the folder for what is made]:folder:_files -/')
password=('--password-file[take the password from the first line of a file]:file:_files')
passphrase=('--passphrase-file[take the passphrase from the first line of a file]:file:_files')
commands=(
  'split:split a file into numbered .sly pieces'
  'join:join the pieces of a split'
  'verify:check the pieces of a split'
  'hide:hide a file in a copy of another'
  'list:list the hidden files'
  'recover:write a hidden file, or the main file'
)

local curcontext=$curcontext state line
_arguments -C \
  '(- *)'{-h,--help}'[print the options]' \
  '(- *)--version[print the version]' \
  '1:command:->command' \
  '*::argument:->argument' && return 0

case $state in
  command) _describe command commands ;;
  argument)
    case $words[1] in
      split)
        _arguments $common $output \
          '(-s --size -n --count)'{-s,--size}'[the size of a piece]:size:' \
          '(-n --count -s --size)'{-n,--count}'[the number of pieces]:number:' \
          '--checksum[write a checksum file beside the pieces]' \
          '1:file:_files'
        ;;
      join)
        _arguments $common $output \
          '--delete[delete the pieces when the joined file was found right]' \
          '1:piece:_files -g "*.(#i)sly(-.)"'
        ;;
      verify) _arguments $common '1:piece:_files -g "*.(#i)sly(-.)"' ;;
      hide)
        _arguments $common $output $password $passphrase \
          '(-e --encrypt)'{-e,--encrypt}'[encrypt the file under a passphrase]' \
          '1:main file:_files' '2:file to hide:_files'
        ;;
      list) _arguments $common $password '1:carrier:_files' ;;
      recover)
        _arguments $common $output $password $passphrase \
          '(-f --file -a --all -m --main)'{-f,--file}'[the serial number of the hidden file]:number:' \
          '(-f --file -a --all -m --main)'{-a,--all}'[recover every hidden file]' \
          '(-f --file -a --all -m --main)'{-m,--main}'[recover the main file]' \
          '(-r --raw)'{-r,--raw}'[recover encrypted files as they are]' \
          '1:carrier:_files'
        ;;
    esac
    ;;
esac
