#include "cli/ShellCompletions.h"

#include "cli/CliHelp.h"
#include "cli/CliRegistry.h"
#include "cli/CliSyntax.h"

namespace {

// The word the bash script uses for a kind of value.
QString kindWord(CliValue kind) {
    switch (kind) {
    case CliValue::Volume:
        return QStringLiteral("volume");
    case CliValue::Path:
        return QStringLiteral("path");
    case CliValue::Folder:
        return QStringLiteral("folder");
    case CliValue::Choice:
        return QStringLiteral("words");
    default:
        return QStringLiteral("none");
    }
}

bool belongsTo(const CliOption &option, const QString &action) {
    return action.isEmpty() || option.actions.isEmpty() || option.actions.contains(action);
}

QStringList optionNames(const QList<CliOption> &options, const QString &action = {}) {
    QStringList names;
    for (const CliOption &option : options)
        if (belongsTo(option, action))
            names << option.name;
    return names;
}

QStringList valueOptionNames(const CliVerb &verb) {
    const CliSyntax &syntax = CliSyntax::of(verb.name);
    QStringList names;
    for (const CliOption &option : syntax.options)
        if (option.takesValue())
            names << option.name;
    return names;
}

QString singleQuoted(QString text) {
    return QLatin1Char('\'') + text.replace(QLatin1Char('\''), QStringLiteral("'\\''")) +
           QLatin1Char('\'');
}

// ---- bash ----------------------------------------------------------------------------

const char *bashHead = R"sh(
# The volume titles of the Mac the command line works on, one a line: the program being
# completed lists them, below the --root given on the line.
_kextkeeper_volumes() {
    local -a cmd=("$1")
    [[ -n $2 ]] && cmd+=(--root "$2")
    local title rest
    while IFS=$'\t' read -r title rest; do
        printf '%s\n' "$title"
    done < <("${cmd[@]}" volumes 2>/dev/null)
}

# _kextkeeper_offer KIND [WORDS...]: what may follow, for the word being completed.
_kextkeeper_offer() {
    local kind=$1 title
    shift
    local IFS=$'\n'
    case $kind in
    volume)
        COMPREPLY=()
        while IFS= read -r title; do
            [[ $title == "$cur"* ]] && COMPREPLY+=("$(printf '%q' "$title")")
        done < <(_kextkeeper_volumes "$cmd" "$root")
        ;;
    path) compopt -o filenames 2>/dev/null; COMPREPLY=($(compgen -f -- "$cur")) ;;
    folder) compopt -o filenames 2>/dev/null; COMPREPLY=($(compgen -d -- "$cur")) ;;
    words) IFS=' '; COMPREPLY=($(compgen -W "$*" -- "$cur")) ;;
    *) COMPREPLY=() ;;
    esac
}

_kextkeeper() {
    local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD-1]}
    # "--opt=value" reaches us as three words: "--opt", "=" and "value".
    if [[ $cur == = ]]; then
        cur=
    elif [[ $prev == = ]]; then
        prev=${COMP_WORDS[COMP_CWORD-2]}
    fi
    local cmd=${COMP_WORDS[0]} root= verb= action= values= i word
    cmd=${cmd/#\~/$HOME}
    for ((i = 1; i < COMP_CWORD; i++)); do
        word=${COMP_WORDS[i]}
        if [[ ${COMP_WORDS[i+1]} == = ]]; then
            [[ $word == --root && -z $verb ]] && root=${COMP_WORDS[i+2]}
            ((i += 2))
        elif [[ -z $verb ]]; then
            case $word in
            --root) root=${COMP_WORDS[i+1]}; ((i++)) ;;
            -*) ;;
            *) verb=$word; values=$(_kextkeeper_values "$verb") ;;
            esac
        elif [[ " $values " == *" $word "* ]]; then
            ((i++))
        elif [[ -z $action && $word != -* ]]; then
            action=$word
        fi
    done
)sh";

// The case arms that offer an option's value when `prev` is that option.
QString bashValueArms(const QList<CliOption> &options) {
    QString text;
    for (const CliOption &option : options)
        if (option.takesValue())
            text += QStringLiteral("        %1) _kextkeeper_offer %2 %3; return ;;\n")
                        .arg(option.name, kindWord(option.kind), option.choices.join(' '));
    return text.isEmpty() ? text
                          : QStringLiteral("        case $prev in\n%1        esac\n").arg(text);
}

QString bashVerb(const CliVerb &verb) {
    const CliSyntax &syntax = CliSyntax::of(verb.name);
    QString text = QStringLiteral("    %1)\n").arg(verb.name) + bashValueArms(syntax.options) +
                   QStringLiteral("        if [[ $cur == -* ]]; then\n");
    if (syntax.actions.isEmpty()) {
        text += QStringLiteral("            _kextkeeper_offer words %1\n")
                    .arg((optionNames(syntax.options) << QStringLiteral("--help")).join(' '));
    } else {
        text += QStringLiteral("            case $action in\n");
        for (const QString &action : syntax.actions)
            text += QStringLiteral("            %1) _kextkeeper_offer words %2 ;;\n")
                        .arg(action, (optionNames(syntax.options, action) << "--help").join(' '));
        text += QStringLiteral("            *) _kextkeeper_offer words --help ;;\n"
                               "            esac\n"
                               "        elif [[ -z $action ]]; then\n"
                               "            _kextkeeper_offer words %1\n")
                    .arg(syntax.actions.join(' '));
    }
    return text + QStringLiteral("        else\n"
                                 "            _kextkeeper_offer %1\n"
                                 "        fi\n"
                                 "        ;;\n")
                      .arg(kindWord(syntax.operands));
}

// ---- zsh -----------------------------------------------------------------------------

const char *zshHead = R"sh(
# The volume titles of the Mac the command line works on: the program being completed
# lists them, below the --root given on the line.
_kextkeeper_volumes() {
  local -a cmd=(${~words[1]}) titles
  [[ -n $root ]] && cmd+=(--root $root)
  titles=(${(f)"$($cmd volumes 2>/dev/null)"})
  titles=(${titles%%$'\t'*})
  compadd -a titles
}

_kextkeeper() {
  local root= verb= action= i word prev=${words[CURRENT-1]}
  local -a values
  for ((i = 2; i < CURRENT; i++)); do
    word=${words[i]}
    if [[ -z $verb ]]; then
      case $word in
      --root) root=${words[i+1]}; ((i++)) ;;
      --root=*) root=${word#--root=} ;;
      -*) ;;
      *) verb=$word; values=(${=$(_kextkeeper_values $verb)}) ;;
      esac
    elif (( ${values[(Ie)$word]} )); then
      ((i++))
    elif [[ -z $action && $word != -* ]]; then
      action=$word
    fi
  done
)sh";

QString zshOffer(CliValue kind, const QStringList &choices) {
    switch (kind) {
    case CliValue::Volume:
        return QStringLiteral("_kextkeeper_volumes");
    case CliValue::Path:
        return QStringLiteral("_files");
    case CliValue::Folder:
        return QStringLiteral("_files -/");
    case CliValue::Choice:
        return QStringLiteral("compadd -- %1").arg(choices.join(' '));
    default:
        return QStringLiteral("_message value");
    }
}

// Words with their help, as zsh shows them beside each other.
QString zshDescribe(const QString &tag, const QList<QPair<QString, QString>> &items) {
    QString text = QStringLiteral("    local -a described=(\n");
    for (const auto &[name, help] : items)
        text +=
            QStringLiteral("      %1\n")
                .arg(singleQuoted(QString(name).replace(':', QStringLiteral("\\:")) + ':' + help));
    return text + QStringLiteral("    )\n    _describe -t %1 %1 described\n").arg(tag);
}

QList<QPair<QString, QString>> optionItems(const QList<CliOption> &options,
                                           const QString &action = {}) {
    QList<QPair<QString, QString>> items;
    for (const CliOption &option : options)
        if (belongsTo(option, action))
            items << qMakePair(option.name, option.help);
    return items;
}

QString zshValueArms(const QList<CliOption> &options) {
    QString text = QStringLiteral("    case $prev in\n");
    for (const CliOption &option : options)
        if (option.takesValue())
            text += QStringLiteral("    %1) %2; return ;;\n")
                        .arg(option.name, zshOffer(option.kind, option.choices));
    return text + QStringLiteral("    esac\n");
}

QString zshVerb(const CliVerb &verb) {
    const CliSyntax &syntax = CliSyntax::of(verb.name);
    const QList<CliOption> options =
        syntax.options +
        QList<CliOption>{{QStringLiteral("--help"), QString(), QStringLiteral("show this text")}};
    QString text = QStringLiteral("  %1)\n").arg(verb.name) + zshValueArms(syntax.options) +
                   QStringLiteral("    if [[ $PREFIX == -* ]]; then\n");
    if (syntax.actions.isEmpty()) {
        text += zshDescribe(QStringLiteral("options"), optionItems(options));
    } else {
        text += QStringLiteral("    case $action in\n");
        for (const QString &action : syntax.actions)
            text += QStringLiteral("    %1)\n").arg(action) +
                    zshDescribe(QStringLiteral("options"), optionItems(options, action)) +
                    QStringLiteral("    ;;\n");
        text += QStringLiteral("    *) compadd -- --help ;;\n    esac\n"
                               "    elif [[ -z $action ]]; then\n    compadd -- %1\n")
                    .arg(syntax.actions.join(' '));
    }
    return text + QStringLiteral("    else\n    %1\n    fi\n    ;;\n")
                      .arg(syntax.operands == CliValue::None ? QStringLiteral("_message 'nothing'")
                                                             : zshOffer(syntax.operands, {}));
}

// ---- fish ----------------------------------------------------------------------------

const char *fishHead = R"sh(
# The verb on the command line, its action, or the --root given before it.
function __kextkeeper_parse
    set -l words (commandline -opc)
    set -l verb
    set -l action
    set -l root
    set -l values
    set -l i 2
    while test $i -le (count $words)
        set -l word $words[$i]
        if test -z "$verb"
            switch $word
                case --root
                    set i (math $i + 1)
                    set root $words[$i]
                case '--root=*'
                    set root (string replace -- --root= '' $word)
                case '-*'
                case '*'
                    set verb $word
                    set values (__kextkeeper_values $verb)
            end
        else if contains -- $word $values
            set i (math $i + 1)
        else if test -z "$action"; and not string match -q -- '-*' $word
            set action $word
        end
        set i (math $i + 1)
    end
    switch $argv[1]
        case verb
            echo $verb
        case action
            echo $action
        case root
            echo $root
    end
end

function __kextkeeper_no_verb
    set -l verb (__kextkeeper_parse verb)
    test -z "$verb"
end

# __kextkeeper_in VERB [ACTION]: the line is at that verb (and that action).
function __kextkeeper_in
    set -l verb (__kextkeeper_parse verb)
    set -l action (__kextkeeper_parse action)
    test "$verb" = "$argv[1]"; or return 1
    test (count $argv) -lt 2; or test "$action" = "$argv[2]"
end

function __kextkeeper_wants_action
    set -l verb (__kextkeeper_parse verb)
    set -l action (__kextkeeper_parse action)
    test "$verb" = "$argv[1]"; and test -z "$action"
end

# The volume titles, listed by the program being completed below the line's --root.
function __kextkeeper_volumes
    set -l cmd (commandline -opc)[1]
    set -l root (__kextkeeper_parse root)
    set -l args
    test -n "$root"; and set args --root $root
    $cmd $args volumes 2>/dev/null | string split -f1 \t
end

complete -c kextkeeper -f
)sh";

QString fishOption(const CliOption &option) {
    QString text = QStringLiteral("-l %1").arg(option.name.mid(2));
    switch (option.takesValue() ? option.kind : CliValue::None) {
    case CliValue::Volume:
        text += QStringLiteral(" -x -a '(__kextkeeper_volumes)'");
        break;
    case CliValue::Path:
        text += QStringLiteral(" -r -F");
        break;
    case CliValue::Folder:
        text += QStringLiteral(" -x -a '(__fish_complete_directories)'");
        break;
    case CliValue::Choice:
        text += QStringLiteral(" -x -a %1").arg(singleQuoted(option.choices.join(' ')));
        break;
    case CliValue::Text:
        text += QStringLiteral(" -x");
        break;
    default:
        break;
    }
    return text + QStringLiteral(" -d %1").arg(singleQuoted(option.help));
}

QString fishVerb(const CliVerb &verb) {
    const CliSyntax &syntax = CliSyntax::of(verb.name);
    const QString complete = QStringLiteral("complete -c kextkeeper -n %1 %2\n");
    QString text;
    for (const QString &action : syntax.actions)
        text += complete.arg(singleQuoted("__kextkeeper_wants_action " + verb.name),
                             QStringLiteral("-a ") + action);
    for (const CliOption &option : syntax.options) {
        const QStringList at = option.actions.isEmpty() ? QStringList{QString()} : option.actions;
        for (const QString &action : at)
            text += complete.arg(
                singleQuoted(("__kextkeeper_in " + verb.name + ' ' + action).trimmed()),
                fishOption(option));
    }
    text += complete.arg(singleQuoted("__kextkeeper_in " + verb.name),
                         QStringLiteral("-l help -d 'show this text'"));
    if (syntax.operands == CliValue::Path || syntax.operands == CliValue::Folder) {
        QString condition = "__kextkeeper_in " + verb.name;
        if (!syntax.actions.isEmpty())
            condition += "; and not __kextkeeper_wants_action " + verb.name;
        text += complete.arg(singleQuoted(condition), QStringLiteral("-F"));
    }
    return text;
}

// A shell function answering, for a verb, which of its options take a value.
QString valuesFunction(const QList<CliVerb> &verbs, const QString &head, const QString &arm,
                       const QString &tail) {
    QString text = head;
    for (const CliVerb &verb : verbs)
        if (!valueOptionNames(verb).isEmpty())
            text += arm.arg(verb.name, valueOptionNames(verb).join(' '));
    return text + tail;
}

} // namespace

QString ShellCompletions::bash(const QList<CliVerb> &verbs) {
    QString text = QStringLiteral("# bash completion for kextkeeper(1), written from its verb "
                                  "table at build time.\n\n");
    text += valuesFunction(verbs,
                           QStringLiteral("# The options of a verb that take a value.\n"
                                          "_kextkeeper_values() {\n    case $1 in\n"),
                           QStringLiteral("    %1) echo %2 ;;\n"), QStringLiteral("    esac\n}\n"));
    text += QLatin1String(bashHead);
    QStringList names;
    for (const CliVerb &verb : verbs)
        names << verb.name;
    text += QStringLiteral("    case $verb in\n    \"\")\n") +
            bashValueArms(CliHelp::globalOptions()) +
            QStringLiteral("        if [[ $cur == -* ]]; then\n"
                           "            _kextkeeper_offer words %1\n"
                           "        else\n"
                           "            _kextkeeper_offer words %2\n"
                           "        fi\n        ;;\n")
                .arg(optionNames(CliHelp::globalOptions()).join(' '), names.join(' '));
    for (const CliVerb &verb : verbs)
        text += bashVerb(verb);
    return text + QStringLiteral("    esac\n}\n\ncomplete -F _kextkeeper kextkeeper\n");
}

QString ShellCompletions::zsh(const QList<CliVerb> &verbs) {
    QString text = QStringLiteral("#compdef kextkeeper\n# zsh completion for kextkeeper(1), "
                                  "written from its verb table at build time.\n\n");
    text += valuesFunction(verbs, QStringLiteral("_kextkeeper_values() {\n  case $1 in\n"),
                           QStringLiteral("  %1) echo %2 ;;\n"), QStringLiteral("  esac\n}\n"));
    text += QLatin1String(zshHead);
    QList<QPair<QString, QString>> verbItems;
    for (const CliVerb &verb : verbs)
        verbItems << qMakePair(verb.name, verb.summary);
    text += QStringLiteral("  case $verb in\n  '')\n") + zshValueArms(CliHelp::globalOptions()) +
            QStringLiteral("    if [[ $PREFIX == -* ]]; then\n") +
            zshDescribe(QStringLiteral("options"), optionItems(CliHelp::globalOptions())) +
            QStringLiteral("    else\n") + zshDescribe(QStringLiteral("verbs"), verbItems) +
            QStringLiteral("    fi\n    ;;\n");
    for (const CliVerb &verb : verbs)
        text += zshVerb(verb);
    return text + QStringLiteral("  esac\n}\n\n_kextkeeper \"$@\"\n");
}

QString ShellCompletions::fish(const QList<CliVerb> &verbs) {
    QString text = QStringLiteral("# fish completion for kextkeeper(1), written from its verb "
                                  "table at build time.\n\n");
    text += valuesFunction(verbs,
                           QStringLiteral("function __kextkeeper_values\n"
                                          "    switch $argv[1]\n"),
                           QStringLiteral("        case %1\n            printf '%s\\n' %2\n"),
                           QStringLiteral("    end\nend\n"));
    text += QLatin1String(fishHead);
    for (const CliOption &option : CliHelp::globalOptions())
        text += QStringLiteral("complete -c kextkeeper -n __kextkeeper_no_verb %1\n")
                    .arg(fishOption(option));
    for (const CliVerb &verb : verbs)
        text += QStringLiteral("complete -c kextkeeper -n __kextkeeper_no_verb -a %1 -d %2\n")
                    .arg(verb.name, singleQuoted(verb.summary));
    for (const CliVerb &verb : verbs)
        text += fishVerb(verb);
    return text;
}
