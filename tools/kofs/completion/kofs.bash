# Completion of kofs for bash: source this file, or install it as kofs among the completions.

_kofs_commands='
    tour explain status exists symlink-status status-express-light access permissions current-path
    change-current-path create-directory create-directories create-symlink rename remove
    remove-file remove-directory remove-symlink remove-all read-symlink absolute canonical
    weakly-canonical relative list hard-link resize touch copy copy-file copy-directory copy-symlink equivalent space
    get-unc-path create-shortcut'

_kofs_permissions='
    owner_read owner_write owner_exec owner_all group_read group_write group_exec group_all
    others_read others_write others_exec others_all set_uid_on_exec set_gid_on_exec sticky_bit
    perms_all'

# The options of a command; those that take a value end in =.
_kofs_options() {
    case $1 in
    access) echo --exists --read --write --execute --expand ;;
    explain | status | exists | symlink-status | space) echo --expand ;;
    read-symlink | absolute | canonical | weakly-canonical | relative) echo --expand --print0 ;;
    current-path | change-current-path | get-unc-path) echo --print0 ;;
    permissions) echo --set= --add= --remove= --no-follow ;;
    create-symlink | remove) echo --file --directory ;;
    rename) echo --keep-times ;;
    list) echo --recursive --follow-links --skip-denied --print0 ;;
    touch) echo --time= ;;
    copy | copy-file)
        echo --overwrite --skip --update --recursive --copy-links --skip-links --create-links
        [ "$1" = copy-file ] || echo --verbose --progress
        ;;
    esac
    [ "$1" = tour ] || echo --json
    echo --help
}

# Without an answer, bash completes names of files.
_kofs() {
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} command='' i
    COMPREPLY=()
    for ((i = 1; i < COMP_CWORD; i++)); do
        [ "${COMP_WORDS[i]}" != -- ] || return 0
        [ -n "$command" ] || [ "${COMP_WORDS[i]}" = --json ] || command=${COMP_WORDS[i]//_/-}
    done
    if [ -z "$command" ]; then
        COMPREPLY=($(compgen -W "$_kofs_commands --json --help --version" -- "$word"))
        return
    fi
    # The = between an option and its value is a word of its own.
    [ "$word" != = ] || word=
    [ "$before" != = ] || before=${COMP_WORDS[COMP_CWORD - 2]}
    if [ "$command" = permissions ] && [[ $before =~ ^--(set|add|remove)$ ]]; then
        local named=''
        [[ $word != *,* ]] || named=${word%,*},
        COMPREPLY=($(compgen -P "$named" -W "$_kofs_permissions" -- "${word##*,}"))
        compopt -o nospace 2>/dev/null # which bash 3 doesn't have
    elif [[ $word == -* ]]; then
        COMPREPLY=($(compgen -W "$(_kofs_options "$command")" -- "$word"))
        [[ ${COMPREPLY[0]-} != *= ]] || compopt -o nospace 2>/dev/null
    fi
}

complete -o bashdefault -o default -F _kofs kofs
