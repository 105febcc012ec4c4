#pragma once

class Database;

// The console's tables, columns and indexes. At start-up: creates a missing file with
// every table and the default rates row, and checks an existing one (a database, with
// every table and column the console uses; missing indexes are added, outgrown ones
// dropped). A damaged file or one of another program is refused with a StoreError and
// left exactly as it was.
void prepareSchema(const Database& database);
