# SPDX-License-Identifier: GPL-3.0-or-later
# Completion of qvl for bash. Names of folders and the like are asked of qvl itself, in the store that the line chooses.

_qvl_names() {
    # $1: folders, contexts, tags or states; prints one title a line
    local key=title
    [[ $1 == states ]] && key=state
    "${COMP_WORDS[0]}" "${globals[@]}" "$1" --json 2>/dev/null </dev/null \
        | grep -oE '"'"$key"'" *: *"([^"\\]|\\.)*"' | sed -E 's/^"[^"]*" *: *"(.*)"$/\1/; s/\\(.)/\1/g'
}

_qvl_complete_names() {
    local name
    local -a found=()
    while IFS= read -r name; do
        if [[ -n $name && ${name,,} == "${cur,,}"* ]]; then
            found+=("$(printf '%q' "$name")")
        fi
    done < <(_qvl_names "$1")
    COMPREPLY=("${found[@]}")
}

_qvl_words() {
    mapfile -t COMPREPLY < <(compgen -W "$1" -- "$cur")
}

_qvl() {
    local cur prev words cword
    _init_completion -n : 2>/dev/null || {
        cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD - 1]}
        words=("${COMP_WORDS[@]}") cword=$COMP_CWORD
    }
    cur=${cur#[\"\']}

    local commands="add list show edit done delete undelete empty-trash folders contexts tags states folder context
        sync settings import export"
    local task_options="--folder --context --state --priority --star --tag --start --due --reminder --note"
    local setting_keys="ToodledoHost ToodleDoUsername ToodleDoPassword AcceptedCertificateDomain RequestTimeout
        ReplyLimit EscapeParameterValues SyncGuards"

    # The command is the first word that is neither a global option nor its value.
    local -a globals=()
    local command= action= i
    for ((i = 1; i < cword; i++)); do
        case ${words[i]} in
            --store | --settings)
                if [[ -z $command && $((i + 1)) -lt $cword ]]; then
                    globals+=("${words[i]}" "${words[i + 1]}")
                fi
                ((++i))
                ;;
            -*) ;;
            *)
                if [[ -z $command ]]; then
                    command=${words[i]}
                elif [[ -z $action ]]; then
                    action=${words[i]}
                fi
                ;;
        esac
    done

    case $prev in
        --store) compopt -o filenames; mapfile -t COMPREPLY < <(compgen -d -- "$cur"); return ;;
        --settings) compopt -o filenames; mapfile -t COMPREPLY < <(compgen -f -- "$cur"); return ;;
        --folder) _qvl_complete_names folders; return ;;
        --context) _qvl_complete_names contexts; return ;;
        --tag | --untag) _qvl_complete_names tags; return ;;
        --state) _qvl_complete_names states; return ;;
        --priority) _qvl_words "-1 0 1 2 3"; return ;;
        --start | --due) _qvl_words "none today tomorrow +1d +3d +7d monday tuesday wednesday thursday friday saturday sunday"; return ;;
        --sort) _qvl_words "title dueDate startDate priority star creationDate modifiedDate completedDate"; return ;;
        --format) _qvl_words "json csv"; return ;;
        --title | --note | --reminder | --where) return ;;
    esac

    case $command in
        "") _qvl_words "$commands --store --settings --help --version" ;;
        add) _qvl_words "$task_options" ;;
        edit) _qvl_words "--title $task_options --no-star --untag" ;;
        show) _qvl_words "--json" ;;
        done) _qvl_words "--undo" ;;
        sync) _qvl_words "--accept-deletions" ;;
        list)
            case $action in
                "") _qvl_words "today inbox trash all folder context --where --sort --json" ;;
                folder) [[ $prev == folder ]] && _qvl_complete_names folders || _qvl_words "--where --sort --json" ;;
                context) [[ $prev == context ]] && _qvl_complete_names contexts || _qvl_words "--where --sort --json" ;;
                *) _qvl_words "--where --sort --json" ;;
            esac
            ;;
        folders | contexts | tags | states) _qvl_words "--json" ;;
        folder)
            case $action in
                "") _qvl_words "add rename delete archive unarchive" ;;
                rename | delete | archive | unarchive) [[ $prev == "$action" ]] && _qvl_complete_names folders ;;
            esac
            ;;
        context)
            case $action in
                "") _qvl_words "add rename delete" ;;
                rename | delete) [[ $prev == "$action" ]] && _qvl_complete_names contexts ;;
            esac
            ;;
        settings) [[ -z $action ]] && _qvl_words "$setting_keys" ;;
        import) compopt -o filenames; mapfile -t COMPREPLY < <(compgen -f -- "$cur") ;;
        export) _qvl_words "--format" ;;
    esac
}

complete -F _qvl qvl
