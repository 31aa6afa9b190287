/* A sample file for the batch demonstration. */
#include <stdio.h>

int main(void)
{
    printf("hello\n");
    return 0;
}
