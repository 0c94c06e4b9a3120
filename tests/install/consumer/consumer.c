/* A program of somebody else in C. */
#include <stdio.h>
#include <string.h>
#include <zmfbconn.h>

int main(void) {
    zmfb_value *connection = zmfb_new(), *level = zmfb_new();
    const zmfb_value* arguments[] = {level};
    int status = 1;
    if (zmfb_connect(connection, NULL, NULL, NULL, NULL) == ZMFB_OK &&
        zmfb_set_number(level, -1, 0, 0) == ZMFB_OK &&
        zmfb_call(connection, "setloglevel", arguments, 1, NULL) == ZMFB_OK &&
        zmfb_call(connection, "nosuch", NULL, 0, NULL) == ZMFB_RAISED) {
        printf("zmfbconn %s\n%s\n", zmfb_version(), strchr(zmfb_message(), ';') + 1);
        status = 0;
    }
    zmfb_free(level), zmfb_free(connection);
    return status;
}
