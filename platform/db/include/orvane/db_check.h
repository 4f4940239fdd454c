/* Checking and repairing a database: whether its files are what its schema says. docs/ovdb.md lists what is
 * looked at and what is repaired. The conventions are those of <orvane/db.h>. */
#ifndef ORVANE_DB_CHECK_H
#define ORVANE_DB_CHECK_H

#include <orvane/db.h>

#ifdef __cplusplus
extern "C" {
#endif

enum {
    dbFINDING_ERROR = 1, /* something is wrong */
    dbFINDING_NOTE = 2,  /* allowed, and perhaps not what was meant */
    dbFINDING_REPAIR = 3 /* what was done about an error, or would be */
};

/* One finding. Texts are never null, borrowed, and live during the call of the hook. */
typedef struct DbFinding {
    int level;
    const char *kind;    /* a word: "range" */
    const char *table;   /* empty where it is about none */
    const char *file;    /* the path */
    int64_t line;        /* of the file, from 1; -1 where it is about none */
    int64_t record;      /* -1: none, or one without a number, as lines before it are no records */
    int64_t offset;      /* in the file, the first byte that it is about; -1 where it is about none */
    const char *field;   /* of a key, its fields: "lat, lon" */
    const char *found;   /* what stands there; bytes that can't be printed as \x00 */
    const char *message; /* what is wrong with it, one line */
    int64_t more;        /* above 0: stands for so many others of its table, kind and field */
} DbFinding;

/* An answer other than 0 ends the check as cancelled. */
typedef int (*dbfinding_hook)(const DbFinding *finding, void *data);

typedef struct DbCheckOptions {
    int64_t limit; /* told of one kind in one field of a table (of notes about records, one); negative: all */
    int repair;    /* 0: none; 1: told, not done; 2: done, which needs a database opened with "r+" */
} DbCheckOptions;

typedef struct DbCheckSummary {
    int64_t tables; /* with a file */
    int64_t records;
    int64_t marked; /* of these */
    int64_t errors;
    int64_t notes;
    int64_t repaired; /* errors that are none any more, or with repair 1 would be none */
} DbCheckSummary;

/* Checks the table that `db` points to, or all of the database where it points to none. Findings come in the
 * order of the files and, in a file, of the records, first those of lines and fields, then of keys. Nothing
 * is locked; what other programs change meanwhile is checked as it is met. Memory does not grow with the
 * tables.
 *
 * A repair loses nothing. A change that was left half done is taken back; a last line that wants nothing but
 * its line feed gets it; lines that are no records are put aside into a file QUAKES.ORIGIN.damaged-TIME, and
 * where they are not at the end the table as it was is kept as QUAKES.ORIGIN.before-TIME; a counter of ids
 * that is behind is raised. Records stay as they are, whatever their fields hold.
 *
 * `options` null: ten of each kind, no repair. Returns 0 also when errors were found, or a negative code when
 * the check could not be done. Calls the progress hook. */
ORVANE_DB_EXPORT int dbcheck(Dbptr db, const DbCheckOptions *options, dbfinding_hook hook, void *data,
                             DbCheckSummary *summary);

/* A kind of findings, as text that the library keeps. */
typedef struct DbFindingKind {
    const char *name;
    int level;
    const char *meaning; /* one line */
} DbFindingKind;

/* The kinds by index, from 0 on. Returns dbERROR_NOT_FOUND behind the last, with nothing in the error log. */
ORVANE_DB_EXPORT int dbcheck_kind(int64_t index, DbFindingKind *kind);

#ifdef __cplusplus
}
#endif

#endif /* ORVANE_DB_CHECK_H */
