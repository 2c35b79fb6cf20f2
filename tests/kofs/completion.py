"""Compares the commands and options in the completions and the manual with those in kofs --help."""
import os
import re
import subprocess
import sys


def output(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def complete_in_bash(script, *words):
    """What bash is told to offer for the last word."""
    program = '. "$0"; COMP_WORDS=(kofs "$@"); COMP_CWORD=$#; _kofs; printf "%s\\n" "${COMPREPLY[@]}"'
    return set(output("bash", "-c", program, script, *words).split())


def main(kofs, source):
    bash = os.path.join(source, "completion", "kofs.bash")
    with open(os.path.join(source, "completion", "_kofs")) as file:
        zsh = file.read()
    with open(os.path.join(source, "kofs.1")) as file:
        manual = file.read()
    listed = output(kofs, "--help").split("Commands:\n")[1].split("\n\n")[0]
    commands = set(re.findall(r"^  ([a-z-]+)", listed, re.M))
    assert len(commands) > 1, listed

    offered = {
        "bash": complete_in_bash(bash, "") - {"--json", "--help"},
        "zsh": set(re.findall(r"^ +['\"]([a-z-]+):", zsh, re.M)),
        "manual": set(re.findall(r"^(?:\.It )?\.?Cm ([a-z-]+)(?= (?:Ar|Oo)|$)", manual, re.M)),
    }
    in_zsh = {}
    for names, text in re.findall(r"^    ([a-z |-]+)\)\s+options=\((.*?)\) ;;", zsh, re.M | re.S):
        for name in names.split(" | "):
            in_zsh[name] = set(re.findall(r"['*)](--[a-z-]+=?)\[", text))
            if "$either" in text:
                in_zsh[name] = {"--file", "--directory"}
    for command in commands:
        listed = output(kofs, command, "--help").split("Options:\n")[1]
        options = set(re.findall(r"^  (--[a-z-]+=?)", listed, re.M))
        found = complete_in_bash(bash, command, "-")
        assert found == options, ("bash", command, found ^ options)
        found = in_zsh.get(command, set())
        assert found == options - {"--json", "--help"}, ("zsh", command, found ^ options)
        for option in options:
            assert f"Fl -{option.strip('-=')}" in manual, ("manual", option)
    for where, found in offered.items():
        assert found == commands, (where, found ^ commands)

    assert complete_in_bash(bash, "permissions", "--add", "=", "group_read,sti") == {"group_read,sticky_bit"}
    assert complete_in_bash(bash, "--json", "copy-s") == {"copy-symlink"}
    assert complete_in_bash(bash, "copy", "--", "-") == set()


main(*sys.argv[1:])
