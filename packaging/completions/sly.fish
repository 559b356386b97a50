# Completes the commands, options and files of sly in fish.

# Adds an option to the commands that are named.
function __sly_option --argument-names commands
    complete -c sly -n "__fish_seen_subcommand_from $commands" $argv[2..]
end

complete -c sly -n __fish_use_subcommand -f
complete -c sly -n __fish_use_subcommand -a split -d 'Split a file into numbered .sly pieces'
complete -c sly -n __fish_use_subcommand -a join -d 'Join the pieces of a split'
complete -c sly -n __fish_use_subcommand -a verify -d 'Check the pieces of a split'
complete -c sly -n __fish_use_subcommand -a hide -d 'Hide a file in a copy of another'
complete -c sly -n __fish_use_subcommand -a list -d 'List the hidden files'
complete -c sly -n __fish_use_subcommand -a recover -d 'Write a hidden file, or the main file'
complete -c sly -n __fish_use_subcommand -l version -d 'Print the version'
complete -c sly -s h -l help -d 'Print the options'

set -l all 'split join verify hide list recover'
__sly_option $all -s y -l yes -d 'Answer Yes to questions, unless pieces are damaged or unproven'
__sly_option $all -l force -d 'Answer Yes to every question'
__sly_option $all -s q -l quiet -d 'Show neither progress nor messages of success'
__sly_option $all -s v -l verbose -d 'Print the path of every file made'
__sly_option split -s s -l size -x -d 'The size of a piece'
__sly_option split -s n -l count -x -d 'The number of pieces'
__sly_option split -l checksum -d 'Write a checksum file beside the pieces'
__sly_option join -l delete -d 'Delete the pieces when the joined file was found right'
__sly_option 'split join hide recover' -s o -l output -x -a '(__fish_complete_directories)' -d 'The folder for what is made'
__sly_option 'join verify' -f -a "(__fish_complete_suffix .sly | string match -ri '.*(?:/|[.]sly)\$')"
__sly_option 'hide list recover' -l password-file -r -d 'Take the password from a file'
__sly_option hide -s e -l encrypt -d 'Encrypt the file under a passphrase'
__sly_option 'hide recover' -l passphrase-file -r -d 'Take the passphrase from a file'
__sly_option recover -s f -l file -x -d 'The serial number of the hidden file'
__sly_option recover -s a -l all -d 'Recover every hidden file'
__sly_option recover -s m -l main -d 'Recover the main file'
__sly_option recover -s r -l raw -d 'Recover encrypted files as they are'

functions --erase __sly_option
