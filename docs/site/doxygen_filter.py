#!/usr/bin/env python3
"""Shows doxygen what we write as people read it elsewhere: the comments of our headers are documentation, and
pages have the anchors and links that they have in a browser of repositories.
Usage: doxygen_filter.py HEADER|PAGE"""

import os
import re
import sys

SHARES = re.compile(r"(?:typedef (?!struct \w+ \{)|NUV\w*_API |(?:static )?inline |virtual |struct \w+;|class \w+;)")


def header(path: str) -> None:
    above = []  # the comment that stands above these lines
    kept = []  # the last whole one, which the declarations behind it share until a blank line
    column = None  # of the comment behind a declaration
    begun = False  # behind that
    hidden = False  # what is private has links to nowhere
    print("/// @file")  # whose first comment is about all of it
    for line in open(path, encoding="utf-8").read().split("\n"):
        if line.startswith(("template <>", "struct std::")):
            continue  # of the standard library's names, which doxygen does not know
        if line == " private:" or hidden and line == "};":
            print("/// @endcond" if hidden else "/// @cond")
            hidden = not hidden
        own = re.match(r"( *)//(?: (.*))?$", line)
        behind = None if own else re.match(r"(.*[^\s:/].*?)( +)// (.*)$", line)
        if own and column is not None and len(own.group(1)) == column:
            print(f"{own.group(1)}///< {own.group(2) or ''}")
            continue
        column = None
        if own and (own.group(2) or "").startswith("----"):
            line = "" if begun else "//"
            own = own if not begun else None
        begun = begun or not own
        if own:
            above.append(line.replace("//", "///", 1))
            print(above[-1])
            continue
        if above:
            kept, above = above, []
        elif line and line[0] not in " }" and SHARES.match(line):
            print("\n".join(kept))
        if not line:
            kept = []
        if behind:
            column = len(behind.group(1)) + len(behind.group(2))
            line = f"{behind.group(1)}{behind.group(2)}///< {behind.group(3)}"
        print(line)


def name_of(path: str) -> str:
    """The one of a page among all pages."""
    name, folder = os.path.splitext(os.path.basename(path))[0].lower(), os.path.dirname(path)
    return os.path.basename(folder) + "-page" if name == "readme" and folder else name + "-page"


def page(path: str) -> None:
    def anchor(title: str) -> str:
        return re.sub(r"[^\w -]", "", title.lower()).replace(" ", "-")

    def link(match: "re.Match[str]") -> str:
        text, target, place = match.groups()
        if re.match(r"\w+:", target) or target.endswith(".svg"):
            return match.group()
        if target and not target.endswith(".md"):
            return text  # a source, which the site does not have
        name = name_of(os.path.normpath(os.path.join(os.path.dirname(path), target)) if target else path)
        return f"[{text}](@ref {name}{'-' + place if place else ''})"

    code = False
    for line in open(path, encoding="utf-8").read().split("\n"):
        code ^= line.startswith("```")
        title = None if code else re.match(r"(#+) (.*)$", line)
        if title:
            line += f" {{#{name_of(path)}{'' if title.group(1) == '#' else '-' + anchor(title.group(2))}}}"
        elif not code:
            line = re.sub(r"\[([^]]+)\]\(([^)#\s]*)(?:#([^)\s]*))?\)", link, line)
        print(line)


path = os.path.relpath(sys.argv[1])
(page if path.endswith(".md") else header)(path)
