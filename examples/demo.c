/* A small program that uses the library through its public header only, and says what it
 * did. Build: make demo. */
#include <stdint.h>
#include <stdio.h>

#include "nq_tls20an.h"

static int compare_numbers(void *a, void *b) {
    intptr_t x = (intptr_t)a, y = (intptr_t)b;
    return x < y ? -1 : x > y ? 1 : 0;
}

/* Wide text to the console: this demo's texts are ASCII. */
static void put_wide(const nq_wchar *text) {
    for (; text && *text; ++text) putchar((int)*text);
}

static void print_list(const char *title, LnkList *list) {
    printf("%s:", title);
    for (nq_LnkList_start(list); !nq_LnkList_eol(list); nq_LnkList_next(list)) {
        printf(" %ld", (long)(intptr_t)nq_LnkList_getCurr(list));
    }
    printf("  (%d nodes)\n", nq_LnkList_length(list));
}

int main(void) {
    printf("nq_tls20an demo\n\n");

    /* An array of three numbers. */
    int values[] = {5, 3, 9};
    nq_Array *array = nq_Array_create(3, sizeof(int), &values[0]);
    nq_Array_setNth(array, 1, &values[1], NULL);
    nq_Array_setNth(array, 2, &values[2], NULL);
    printf("array of %u ints: %d %d %d\n", nq_Array_size(array), *(int *)nq_Array_getNth(array, 0),
           *(int *)nq_Array_getNth(array, 1), *(int *)nq_Array_getNth(array, 2));
    nq_Array_swap(array, 0, 2);
    printf("after swapping the ends: %d %d %d\n", *(int *)nq_Array_getNth(array, 0),
           *(int *)nq_Array_getNth(array, 1), *(int *)nq_Array_getNth(array, 2));
    nq_Array_destroy(array, NULL);

    /* A linked list, sorted two ways, moved and joined. */
    LnkList *list = nq_LnkList_create((void *)8, (void *)3, (void *)5, (void *)1, NULL);
    print_list("\nlist as made", list);
    nq_LnkList_qSort(list, compare_numbers);
    print_list("quick-sorted", list);
    nq_LnkList_move(list, 0, 3);
    print_list("first moved to the end", list);
    LnkList *more = nq_LnkList_create((void *)42, (void *)7, NULL);
    nq_LnkList_join(list, more);
    nq_LnkList_sort(list, compare_numbers);
    print_list("joined with 42 and 7, selection-sorted", list);

    /* Tracing of the list family to the console. */
    printf("\ntracing nq_LnkList_length at level 3:\n");
    fflush(stdout);
    nq_Diag_setOutput(NQ_DIAG_OUTPUT_CONSOLE, NULL);
    nq_Diag_setLevel(3);
    nq_Diag_setCondition(NQ_DIAG_LNKLIST);
    int length = nq_LnkList_length(list);
    nq_Diag_disable();
    printf("length %d\n", length);

    nq_LnkList_destroy(list, NULL);

    /* A copy of a wide string and its last path component. */
    nq_wchar *name = nq_Str_dup(u"C:\\PLANT\\DATA\\PIPES.DBF");
    nq_Fname_rmvPath(name);
    printf("\nlast component of C:\\PLANT\\DATA\\PIPES.DBF: ");
    put_wide(name);
    printf("\n");
    nq_Free(name);

    /* String functions: the single-pass wildcard match and tokens. */
    printf("\"PIPE-0042\" matches \"PIPE-*\": %d, \"*abd\" matches \"abcabd\": %d\n",
           nq_Str_matchWildcard(u"PIPE-0042", u"PIPE-*"), nq_Str_matchWildcard(u"abcabd", u"*abd"));
    int position = -1;
    printf("token 2 (counted from 0) of \"DN100;PN16;ST37\" is ");
    put_wide(nq_Str_getNthToken(u"DN100;PN16;ST37", u";", 2, &position));
    printf(" at index %d\n", position);

    /* A typed field list, printed by the library. */
    FldList *fields = nq_FldList_create(u"tag", 'C', u"P-101", u"size", 'I', 100, u"origin", 'P', 1.0, 2.0, 3.0,
                                        (const nq_wchar *)NULL);
    nq_FldList_appReal(fields, u"pressure", 16.5);
    double pressure = 0.0;
    nq_FldList_getReal(fields, u"PRESSURE", &pressure);
    printf("\nfield list (names upper-cased, PRESSURE read back as %.1f):\n", pressure);
    fflush(stdout);
    nq_FldList_printList(fields);
    fflush(stdout);
    nq_FldList_destroy(fields);

    /* A rotation of a quarter turn about Z applied to a point. */
    RotMatrix *rotation = nq_RotMatrix_create();
    Vector axis;
    Point point;
    nq_Vector_set(&axis, 0.0, 0.0, 1.0);
    nq_Point_set(&point, 1.0, 0.0, 5.0);
    nq_RotMatrix_fromRotAxisAndAngle(rotation, &axis, 3.141592653589793 / 2.0);
    nq_RotMatrix_rotatePoint(&point, rotation);
    printf("\n(1, 0, 5) turned a quarter about Z: (%.3f, %.3f, %.3f)\n", point.x + 0.0, point.y + 0.0, point.z);
    nq_RotMatrix_destroy(rotation);
    return 0;
}
