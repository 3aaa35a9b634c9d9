/* A small program that uses the library through its public header only. */
#include <stdio.h>

#include "nq_tls20an.h"

int main(void) {
    int values[] = {5, 3, 9};
    nq_Array *array = nq_Array_create(3, sizeof(int), &values[0]);
    nq_Array_setNth(array, 1, &values[1], NULL);
    nq_Array_setNth(array, 2, &values[2], NULL);
    printf("array of %u ints: %d %d %d\n", nq_Array_size(array), *(int *)nq_Array_getNth(array, 0),
           *(int *)nq_Array_getNth(array, 1), *(int *)nq_Array_getNth(array, 2));
    nq_Array_destroy(array, NULL);
    return 0;
}
