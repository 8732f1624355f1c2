"""Single changes of C++ source text, each of the kind that a slip of the hand makes."""
import re
from dataclasses import dataclass

from cpp_source import tokens_of

COMPARISONS = {'==': '!=', '!=': '==', '<': '<=', '<=': '<', '>': '>=', '>=': '>', '&&': '||', '||': '&&'}
ARITHMETIC = {'+': '-', '-': '+', '*': '/', '|': '&', '&': '|', '<<': '>>', '>>': '<<'}
NOT_A_STATEMENT = {'return', 'using', 'const', 'auto', 'static', 'struct', 'class', 'enum', 'throw', 'goto', 'constexpr',
                   'inline', 'namespace', 'public', 'private', 'protected', 'typedef', 'template', 'friend', 'virtual',
                   'case', 'default', 'if', 'else', 'for', 'while', 'do', 'switch', 'try', 'catch', 'static_assert', 'union'}


@dataclass(frozen=True)
class Change:
    kind: str
    start: int
    end: int
    new: str


def changed_number(token, random):
    digits = token.text.rstrip('uUlL')
    suffix = token.text[len(digits):]
    value = int(digits.replace("'", ''), 0) if not re.fullmatch(r'0[0-7]+', digits) else int(digits, 8)
    others = {value + 1, max(value - 1, 0), 0 if value > 2 else 2} - {value}
    other = random.choice(sorted(others))
    return (f'0x{other:X}' if digits[:2] in ('0x', '0X') else str(other)) + suffix


def changed_text(token, random):
    letters = [place for place in range(1, len(token.text) - 1)
               if token.text[place].isascii() and token.text[place].isalpha() and token.text[place - 1] not in '\\%.l0123456789']
    if not letters:
        return None
    place = random.choice(letters)
    letter = token.text[place]
    other = 'q' if letter.lower() != 'q' else 'k'
    return token.text[:place] + (other.upper() if letter.isupper() else other) + token.text[place + 1:]


def without_effect(tokens):
    """The places of tokens whose change would change nothing that a program does, so that no test could notice."""
    places = set()
    texts = [token.text for token in tokens]
    for at, text in enumerate(texts):
        if texts[at:at + 2] == ['[', '[']: # an attribute, such as for the compiler's own checks of formats
            end = next((end for end in range(at, len(texts)) if texts[end:end + 2] == [']', ']']), at)
            places.update(range(at, end))
        elif text == 'reserve' and texts[at + 1:at + 2] == ['(']: # more or less of what is found later as well
            end = next((end for end in range(at, len(texts)) if texts[end] == ';'), at)
            # A sum that becomes a difference may pass below 0, and a number that is taken off may become too large.
            places.update(place for place in range(at, end) if texts[place] == '-' or
                          tokens[place].kind == 'number' and texts[place - 1] != '-')
        elif text in ('min', 'max') and texts[at - 1] == '::' and texts[at + 1:at + 2] == ['(']: # the same either way round
            places.add(at)
        elif text == 'array' and texts[at + 1:at + 2] == ['<']: # a buffer holds what it has to with a byte more or less, too
            kind = ''.join(texts[at + 2:at + 6])
            if kind.startswith(('char,', 'std::uint8_t')):
                size = at + (4 if kind.startswith('char,') else 6)
                if size < len(tokens) and tokens[size].kind == 'number' and int(re.sub(r"[uUlL']", '', texts[size]), 0) >= 32:
                    places.add(size)
    return places


def argument_lists(tokens, left_out):
    """Of each call: the places of its arguments. What looks like a declaration's parameters is none."""
    closing = {'(': ')', '[': ']', '{': '}'}
    for at, token in enumerate(tokens[:-1]):
        if token.kind != 'word' or tokens[at + 1].text != '(' or token.text in NOT_A_STATEMENT or at in left_out:
            continue
        stack, arguments, first, at = [')'], [], at + 2, at + 2
        while at < len(tokens) and stack:
            text = tokens[at].text
            if text in closing:
                stack.append(closing[text])
            elif text == stack[-1]:
                stack.pop()
            elif text == ';':
                break
            if (text == ',' and len(stack) == 1) or not stack:
                arguments.append((first, at))
                first = at + 1
            at += 1
        if not stack and len(arguments) > 1 and all(end > start for start, end in arguments):
            yield arguments


def is_parameter(tokens, argument):
    part = tokens[argument[0]:argument[1]]
    return any(a.kind == b.kind == 'word' for a, b in zip(part, part[1:])) or (
        len(part) > 1 and part[-1].kind == 'word' and part[-2].text in '&*>')


def swaps(source, tokens, left_out):
    for arguments in argument_lists(tokens, left_out):
        for one, two in zip(arguments, arguments[1:]):
            if is_parameter(tokens, one) or is_parameter(tokens, two):
                continue
            a = source[tokens[one[0]].start:tokens[one[1] - 1].end]
            b = source[tokens[two[0]].start:tokens[two[1] - 1].end]
            if a != b:
                between = source[tokens[one[1] - 1].end:tokens[two[0]].start]
                yield Change('swapped arguments', tokens[one[0]].start, tokens[two[1] - 1].end, b + between + a)


def dropped_statements(tokens):
    """Whole statements that are calls, assignments, or a leap. Not reserve(): its memory is found later as well."""
    for at, token in enumerate(tokens[:-2]):
        if at == 0 or tokens[at - 1].text not in ';{}' or token.kind != 'word' and token.text not in ('++', '--', '*'):
            continue
        after = tokens[at + 1]
        if token.text not in ('break', 'continue') and (token.text in NOT_A_STATEMENT or after.kind == 'word' or after.text in '<&*'):
            continue
        end, depth, assigns = at, 0, token.text in ('break', 'continue', '++', '--')
        while end < len(tokens) and (tokens[end].text != ';' or depth > 0) and depth >= 0:
            depth += {'(': 1, '{': 1, '[': 1, ')': -1, '}': -1, ']': -1}.get(tokens[end].text, 0)
            assigns |= depth == 0 and tokens[end].text in ('=', ')', '++', '--')
            if depth == 1 and tokens[end].text == '{' and tokens[end - 1].text == ')':
                depth = -1 # the head of a function
            end += 1
        part = tokens[at:end]
        declared = any(other.text in ('reserve', 'override', 'const', 'noexcept', 'default') for other in part)
        if depth == 0 and assigns and end < len(tokens) and not declared:
            declares = any(a.kind == b.kind == 'word' or a.text in '>&*' and b.kind == 'word' and c.text == '='
                           for a, b, c in zip(part, part[1:], part[2:]) if '(' not in [t.text for t in part[:part.index(b)]])
            if not declares:
                yield Change('dropped statement', token.start, tokens[end].end, ';')


def changes_of(source, random):
    """All that could be changed in this source, in the order of the kinds."""
    tokens = tokens_of(source)
    left_out = without_effect(tokens)
    found = list(swaps(source, tokens, left_out)) + list(dropped_statements(tokens))
    asserted = None
    for at, token in enumerate(tokens):
        if token.text == 'static_assert':
            asserted = ';'
        elif token.text == asserted:
            asserted = None
        if asserted or at in left_out:
            continue
        spaced = source[token.start - 1:token.start].isspace() and source[token.end:token.end + 1].isspace()
        new, kind = None, None
        if token.kind == 'number':
            kind, new = 'constant', changed_number(token, random)
        elif token.text in ('true', 'false'):
            kind, new = 'constant', 'false' if token.text == 'true' else 'true'
        elif token.kind == 'text':
            kind, new = 'text', changed_text(token, random)
        elif spaced and token.text in COMPARISONS:
            kind, new = 'comparison', COMPARISONS[token.text]
        elif spaced and token.text in ARITHMETIC:
            kind, new = 'arithmetic', ARITHMETIC[token.text]
        elif token.text == '!' and not source[token.end:token.end + 1].isspace():
            kind, new = 'comparison', ''
        if new is not None:
            found.append(Change(kind, token.start, token.end, new))
    return found
