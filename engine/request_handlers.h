#ifndef REQUEST_HANDLERS_H
#define REQUEST_HANDLERS_H

struct RequestCall;

/* What answers the requests: each puts a value, a pointer or an error into the response of its call, whose
 * conditions have been tested. */
namespace requests {

/* database_requests.cpp */
void openDatabase(const RequestCall &call);
void closeDatabase(const RequestCall &call);
void databaseAbspath(const RequestCall &call);

/* metadata_requests.cpp: one query, the code of which stands in the row */
void queryText(const RequestCall &call);
void queryFlag(const RequestCall &call);
void queryNumber(const RequestCall &call);
void queryNames(const RequestCall &call);
void linkFields(const RequestCall &call);

/* table_requests.cpp: what is gathered over tables */
void tableModTime(const RequestCall &call);
void tableState(const RequestCall &call);
void tableModTimes(const RequestCall &call);
void tableFields(const RequestCall &call);
void baseTablesPresent(const RequestCall &call);
void baseTablesAbsent(const RequestCall &call);
void viewsPresent(const RequestCall &call);

/* lookup_requests.cpp */
void lookupTable(const RequestCall &call);
void lookupField(const RequestCall &call);
void lookupRecord(const RequestCall &call);

/* join_candidates.cpp */
void findJoinTables(const RequestCall &call);
void findJoinTablesPresent(const RequestCall &call);

/* sampling.cpp */
void sampleField(const RequestCall &call);

/* derivation_requests.cpp: new views of the table pointed to */
void sortRows(const RequestCall &call);
void groupRows(const RequestCall &call);
void ungroupRows(const RequestCall &call);
void subsetRows(const RequestCall &call);
void joinTable(const RequestCall &call);
void outerJoinTable(const RequestCall &call);
void leftJoinTable(const RequestCall &call);
void noJoinTable(const RequestCall &call);
void thetaJoinTable(const RequestCall &call);
void severTable(const RequestCall &call);
void separateTable(const RequestCall &call);

/* record_requests.cpp */
void getText(const RequestCall &call);
void getValues(const RequestCall &call);
void findRecord(const RequestCall &call);
void movedRecords(const RequestCall &call);
void findRows(const RequestCall &call);

/* record_changes.cpp */
void putValues(const RequestCall &call);
void addRecord(const RequestCall &call);
void addCheckedRecord(const RequestCall &call);
void markRecord(const RequestCall &call);
void putRows(const RequestCall &call);
void markRows(const RequestCall &call);
void crunchTable(const RequestCall &call);
void freeView(const RequestCall &call);

} // namespace requests

#endif
