/* Counts the records of a table, through the C interface alone. */
#include <orvane/db.h>
#include <orvane/util.h>

#include <inttypes.h>
#include <stdio.h>
#include <stdlib.h>

int main(int argc, char **argv)
{
    Dbptr db, table;
    int64_t count = 0;
    char *log;

    if (argc != 3) {
        fprintf(stderr, "usage: count DATABASE TABLE\n");
        return 2;
    }
    if (dbopen_database(argv[1], "r", &db) < 0) {
        log = elog_string(0);
        fprintf(stderr, "%s\n", log);
        free(log);
        return 1;
    }
    table = dblookup(db, NULL, argv[2], NULL, NULL);
    if (dbquery(table, dbRECORD_COUNT, &count) < 0)
        return 1;
    printf("%" PRId64 "\n", count);
    return OVdbclose(db) < 0;
}
