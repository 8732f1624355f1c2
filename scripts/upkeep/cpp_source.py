"""What C++ source text is made of: tokens, and the lines that are the preprocessor's."""
import re
from dataclasses import dataclass

# Comments, texts and preprocessor lines are separated from code here, so that no check takes a comment for code.
TOKEN = re.compile(
    r'(?P<comment>//(?:[^\n\\]|\\\n|\\.)*|/\*.*?\*/)'
    r'|(?P<directive>^[ \t]*\#(?:[^\n\\]|\\.|\\\n)*)'
    r'|(?P<raw>R"(?P<fence>[^()\s\\]{0,16})\(.*?\)(?P=fence)")'
    r'|(?P<text>"(?:[^"\\\n]|\\.)*")'
    r"|(?P<character>(?<![0-9A-Fa-f])'(?:[^'\\\n]|\\.)*')"
    r"|(?P<number>(?<![\w.])(?:0[xX][0-9a-fA-F']+|\d[\d']*)(?![\w.']*\.)[uUlL]*(?![\w.]))"
    r'|(?P<word>[A-Za-z_]\w*)'
    r'|(?P<space>\s+)'
    r'|(?P<sign><<=|>>=|<=>|->|::|\+\+|--|&&|\|\||==|!=|<=|>=|[-+*/%&|^!~<>=?:;,.(){}\[\]]|.)',
    re.S | re.M)
DIRECTIVE = re.compile(r'\s*(?:\#|%:)\s*([A-Za-z_]\w*)\s*(.*)', re.S)


@dataclass(frozen=True)
class Token:
    kind: str
    text: str
    start: int
    end: int


def tokens_of(source):
    found = []
    for match in TOKEN.finditer(source):
        kind = match.lastgroup if match.lastgroup != 'fence' else 'raw'
        if kind not in ('comment', 'directive', 'space'):
            found.append(Token(kind, match.group(), match.start(), match.end()))
    return found


def without_comments(source):
    """The same lines, with a space for each comment and nothing in raw texts."""
    def replaced(match):
        text = match.group()
        if text.startswith(('//', '/*')):
            return ' ' + '\n' * text.count('\n')
        return '""' + '\n' * text.count('\n') if text.startswith('R"') else text
    return re.sub(r'//(?:[^\n\\]|\\\n|\\.)*|/\*.*?\*/|R"([^()\s\\]{0,16})\(.*?\)\1"|"(?:[^"\\\n]|\\.)*"'
                  r"|(?<![0-9A-Fa-f])'(?:[^'\\\n]|\\.)*'", replaced, source, flags=re.S)


def directives_of(source):
    """Of each line for the preprocessor: its number, its word, and the rest; continued lines are one."""
    lines = without_comments(source).split('\n')
    at = 0
    while at < len(lines):
        first, line = at, lines[at]
        while line.endswith('\\') and at + 1 < len(lines):
            at += 1
            line = line[:-1] + lines[at]
        at += 1
        match = DIRECTIVE.fullmatch(line)
        if match:
            yield first + 1, match[1], match[2].strip()
