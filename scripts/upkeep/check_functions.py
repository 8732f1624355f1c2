#!/usr/bin/env python3
"""Checks that functions have at most 50 lines, and those of the product a cyclomatic complexity of at most 16.

    check_functions.py [--all] [TREE]

Prints each function that is above a bound, and fails. --all prints every function with its lines and its complexity.
A lambda counts with the function around it. The complexity is 1, and 1 more for each if, for, while, case, catch,
&&, || and ?.
"""
import argparse
import pathlib
import sys
from bisect import bisect
from dataclasses import dataclass

from cpp_source import tokens_of

TOP = pathlib.Path(__file__).resolve().parents[2]
LONGEST = 50 # lines
WAYS = 16
SHORT = ('src', 'sim', 'tools', 'tests', 'bench', 'fuzz', 'examples')
SIMPLE = ('src', 'sim', 'tools')
BRANCHES = {'if', 'for', 'while', 'case', 'catch', '||', '?', 'and', 'or'}
SCOPES = {'namespace', 'class', 'struct', 'union', 'enum', 'extern'}
BEFORE_BODY = {')', '}', 'const', 'noexcept', 'override', 'final', '&', '&&', 'try'}
CLOSING = {'(': ')', '[': ']', '{': '}'}


@dataclass(frozen=True)
class Function:
    name: str
    line: int
    lines: int
    complexity: int


class Walk:
    """Goes through the tokens of one file from brace to brace; what is between braces of a function is its body."""

    def __init__(self, source):
        self.source = source
        self.tokens = tokens_of(source)
        self.starts = [0] + [at + 1 for at, letter in enumerate(source) if letter == '\n']
        self.found = []
        self.scope(0)

    def line(self, at):
        return bisect(self.starts, self.tokens[at].start)

    def end_of(self, at):
        """The place after the bracket that closes the one here."""
        depth = 0
        while at < len(self.tokens):
            text = self.tokens[at].text
            depth += (text in CLOSING) - (text in CLOSING.values())
            at += 1
            if depth == 0:
                break
        return at

    def scope(self, at):
        """Looks at what is declared from here to the end of the braces; returns the place after them."""
        head = at # where the declaration under way begins
        while at < len(self.tokens):
            text = self.tokens[at].text
            if text == '}':
                return at + 1
            if text in ('(', '['):
                at = self.end_of(at)
                continue
            if text == '{':
                at = self.braces(head, at)
                after = self.tokens[at].text if at < len(self.tokens) else ''
                if self.inside_list:
                    continue
                head = at + (after == ';')
            elif text == ';' or text == ':' and self.tokens[at - 1].text in ('public', 'private', 'protected'):
                head = at + 1
            at += 1 if text != '{' else 0
        return at

    def outer(self, head, at):
        """The declaration's tokens that are in no brackets."""
        while head < at:
            text = self.tokens[head].text
            if text in ('(', '['):
                yield head, '()' if text == '(' else '[]'
                head = self.end_of(head)
            else:
                yield head, text
                head += 1

    def braces(self, head, at):
        """What the braces here are, of the declaration that begins at `head`."""
        self.inside_list = False
        words = [text for _, text in self.outer(head, at)]
        before = self.tokens[at - 1]
        if '()' in words and '=' not in words[words.index('()') - 1:] or 'operator' in words:
            listed = ':' in words[words.index('()'):]
            if listed and (before.kind == 'word' or before.text == '>') and before.text != 'try':
                self.inside_list = True # of member initializers
                return self.end_of(at)
            begins = before.text in BEFORE_BODY or '->' in words
            if begins and (words[0] not in SCOPES or words[0] == 'struct' and words[-1] == '()'):
                return self.function(head, at, words)
        if SCOPES & set(words) and '=' not in words and 'enum' not in words:
            return self.scope(at + 1)
        end = self.end_of(at)
        for place in range(head, end): # a table may hold functions without a name
            if self.tokens[place].text == ']' and self.tokens[place + 1].text == '(':
                body = self.end_of(place + 1)
                while self.tokens[body].text not in ('{', ';', ',', ')'):
                    body += 1
                if self.tokens[body].text == '{':
                    self.function(place, body, ['lambda', '()'])
        return end

    def function(self, head, body, words):
        while self.tokens[head].text == ';':
            head += 1
        end = self.end_of(body)
        name = ''
        for place, text in self.outer(head, body):
            if text == '()':
                break
            name = name + text if text in ('::', '~') or name.endswith(('::', '~', 'operator')) else text
        if words[0] == 'lambda':
            name = 'lambda'
        elif name.startswith('TEST'):
            name = ''.join(token.text for token in self.tokens[place + 1:self.end_of(place) - 1])
        complexity = 1
        for token in self.tokens[head:end]:
            # (An operator stands apart; what makes a reference stands beside its type.)
            spaced = self.source[token.start - 1].isspace()
            complexity += token.text in BRANCHES or token.text == '&&' and spaced
        first = self.line(head)
        self.found.append(Function(name, first, self.line(end - 1) - first + 1, complexity))
        return end


def main():
    parser = argparse.ArgumentParser(description=f'Functions above {LONGEST} lines or a complexity of {WAYS}.')
    parser.add_argument('--all', action='store_true', help='print every function: lines, complexity, name')
    parser.add_argument('tree', nargs='?', type=pathlib.Path, default=TOP)
    options = parser.parse_args()
    count = wrong = 0
    for top in SHORT:
        for path in sorted((options.tree / top).rglob('*')):
            if path.suffix not in ('.cpp', '.h', '.c'):
                continue
            name = path.relative_to(options.tree).as_posix()
            for function in Walk(path.read_bytes().decode('utf-8', 'replace')).found:
                count += 1
                where = f'{name}:{function.line}: {function.name}'
                if options.all:
                    print(f'{function.lines:4} {function.complexity:3} {where}')
                if function.lines > LONGEST:
                    wrong += 1
                    print(f'{where}: {function.lines} lines; {LONGEST} fit a screen', file=sys.stderr)
                if function.complexity > WAYS and top in SIMPLE:
                    wrong += 1
                    print(f'{where}: complexity {function.complexity}; at most {WAYS}', file=sys.stderr)
    if count == 0:
        print('check_functions.py: found no function', file=sys.stderr)
    return 1 if wrong or count == 0 else 0


if __name__ == '__main__':
    sys.exit(main())
