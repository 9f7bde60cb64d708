#include <Tavaro/Studio/Lists/RowsModel.h>
