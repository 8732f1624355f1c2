/* Scrambles a password for the section [RUVO_PASSWORDS] of an INI file:
 *     scramble
 * Reads the password from standard input, where no list of processes shows it, and prints the scrambled text. */
#include <ruvo/ruvo.h>

#include <stdio.h>
#include <string.h>

int main(void) {
    char line[64];
    char scrambled[RUVO_SCRAMBLED_SIZE];
    char back[RUVO_PASSWORD_SIZE];
    if (fgets(line, sizeof line, stdin) == NULL) {
        fprintf(stderr, "scramble: no password was given\n");
        return 64;
    }
    line[strcspn(line, "\r\n")] = '\0';
    if (encrypt(line, scrambled) != 0) {
        fprintf(stderr, "scramble: a password has at most %d characters\n", RUVO_PASSWORD_SIZE - 1);
        return 1;
    }
    if (decrypt(scrambled, back) != 0 || strcmp(line, back) != 0) {
        fprintf(stderr, "scramble: the text does not give the password back\n");
        return 1;
    }
    printf("%s\n", scrambled);
    return 0;
}
