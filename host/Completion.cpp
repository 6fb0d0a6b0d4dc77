#include "host/Completion.h"

#include <cstring>

namespace tarnwell {

namespace {

/// "-o" and "--output".
QStringList spellings(const QCommandLineOption& option) {
  QStringList names;
  for (const QString& name : option.names())
    names += (name.size() == 1 ? "-" : "--") + name;
  return names;
}

bool takesFile(const QCommandLineOption& option) { return option.valueName() == "FILE"; }

bool takesFile(const Command& command) {
  for (const Argument& argument : command.arguments) {
    if (std::strstr(argument.name, "FILE") != nullptr)
      return true;
  }
  return false;
}

/// What a script completes.
struct Table {
  const std::vector<Command>& commands;
  const QList<QCommandLineOption>& general;
};

QString commandNames(const Table& table, const char* separator, bool onlyWithFile = false) {
  QStringList names;
  for (const Command& command : table.commands) {
    if (!onlyWithFile || takesFile(command))
      names += command.name;
  }
  return names.join(separator);
}

QStringList spellings(const QList<QCommandLineOption>& options) {
  QStringList names;
  for (const QCommandLineOption& option : options)
    names += spellings(option);
  return names;
}

/// The spellings of all options whose value is a file, or is not, separated by "|".
QString optionsWithValue(const Table& table, bool isFile) {
  QStringList names;
  const auto add = [&](const QList<QCommandLineOption>& options) {
    for (const QCommandLineOption& option : options) {
      if (!option.valueName().isEmpty() && takesFile(option) == isFile)
        names += spellings(option);
    }
  };
  add(table.general);
  for (const Command& command : table.commands)
    add(command.options);
  names.removeDuplicates();
  return names.join('|');
}

QString bashScript(const Table& table) {
  QString cases;
  for (const Command& command : table.commands) {
    if (!command.options.isEmpty())
      cases += QString("    %1) options+=\" %2\" ;;\n").arg(command.name, spellings(command.options).join(' '));
  }
  return QString(R"(# bash completion for tarnwell
_tarnwell() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD-1]} command="" word
  for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
    case $word in %1) command=$word; break ;; esac
  done
  COMPREPLY=()
  case $previous in
    %2) mapfile -t COMPREPLY < <(compgen -f -- "$current"); return ;;
    %3) return ;;
  esac
  local options="%4"
  case $command in
%5  esac
  if [[ $current == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$options" -- "$current")
    return
  fi
  case $command in
    "" | help) mapfile -t COMPREPLY < <(compgen -W "%6" -- "$current") ;;
    completion) mapfile -t COMPREPLY < <(compgen -W "bash zsh fish" -- "$current") ;;
    %7) mapfile -t COMPREPLY < <(compgen -f -- "$current") ;;
  esac
}
complete -o filenames -F _tarnwell tarnwell
)")
      .arg(commandNames(table, "|"), optionsWithValue(table, true), optionsWithValue(table, false),
           spellings(table.general).join(' '), cases, commandNames(table, " "), commandNames(table, "|", true));
}

/// `text` in single quotes of a POSIX shell or fish.
QString singleQuoted(QString text) { return '\'' + text.replace('\'', "'\\''") + '\''; }

/// One option as an argument of zsh's _arguments.
QString zshOption(const QCommandLineOption& option) {
  QString help = option.description();
  for (const char special : {'\\', '[', ']', ':'})
    help.replace(special, QString("\\") + special);
  const QStringList names = spellings(option);
  QString value;
  if (!option.valueName().isEmpty())
    value = ':' + QString(option.valueName()).replace(':', "\\:") + ':' + (takesFile(option) ? "_files" : "");
  QString text;
  for (const QString& name : names)
    text += "\n    " + singleQuoted('(' + names.join(' ') + ')' + name + '[' + help + ']' + value);
  return text;
}

/// "()" is an argument without proposals: with an empty action, zsh would only list a unique option, not insert it.
QString zshScript(const Table& table) {
  QString cases;
  QString described;
  for (const Command& command : table.commands) {
    described += "\n    " + singleQuoted(QString(command.name) + ':' + command.summary);
    QString options;
    for (const QCommandLineOption& option : command.options)
      options += zshOption(option);
    if (!options.isEmpty())
      cases += QString("    %1) options+=(%2) ;;\n").arg(command.name, options);
  }
  QString general;
  for (const QCommandLineOption& option : table.general)
    general += zshOption(option);
  return QString(R"(#compdef tarnwell
_tarnwell() {
  local -a commands=(%1)
  local -a options=(%2)
  local command=${words[(r)(%3)]}
  case $command in
%4  esac
  case $command in
    '') _arguments $options "1:command:{_describe command commands}" ;;
    help) _arguments $options '1: :' "2:command:{_describe command commands}" ;;
    completion) _arguments $options '1: :' '2:shell:(bash zsh fish)' ;;
    %5) _arguments $options '1: :' '*:file:_files' ;;
    *) _arguments $options '1: :' '*: :()' ;;
  esac
}
if [ "$funcstack[1]" = _tarnwell ]; then _tarnwell "$@"; else compdef _tarnwell tarnwell; fi
)")
      .arg(described, general, commandNames(table, "|"), cases, commandNames(table, "|", true));
}

QString fishOption(const QCommandLineOption& option, const QString& condition) {
  QString line = "complete -c tarnwell" + condition;
  for (const QString& name : option.names())
    line += (name.size() == 1 ? " -s " : " -l ") + name;
  if (!option.valueName().isEmpty())
    line += takesFile(option) ? " -r -F" : " -x";
  return line + " -d " + singleQuoted(option.description()) + '\n';
}

QString fishScript(const Table& table) {
  QString script = "# fish completion for tarnwell\ncomplete -c tarnwell -f\n";
  for (const QCommandLineOption& option : table.general)
    script += fishOption(option, {});
  for (const Command& command : table.commands) {
    script += QString("complete -c tarnwell -n __fish_use_subcommand -a %1 -d %2\n")
                  .arg(command.name, singleQuoted(command.summary));
    const QString condition = QString(" -n '__fish_seen_subcommand_from %1'").arg(command.name);
    for (const QCommandLineOption& option : command.options)
      script += fishOption(option, condition);
    if (takesFile(command))
      script += "complete -c tarnwell" + condition + " -F\n";
  }
  script += "complete -c tarnwell -n '__fish_seen_subcommand_from completion' -a 'bash zsh fish'\n";
  return script +
         QString("complete -c tarnwell -n '__fish_seen_subcommand_from help' -a '%1'\n").arg(commandNames(table, " "));
}

} // namespace

QString completionScript(const QString& shell, const std::vector<Command>& commands,
                         const QList<QCommandLineOption>& general) {
  const Table table{commands, general};
  if (shell == "bash")
    return bashScript(table);
  if (shell == "zsh")
    return zshScript(table);
  return shell == "fish" ? fishScript(table) : QString();
}

} // namespace tarnwell
